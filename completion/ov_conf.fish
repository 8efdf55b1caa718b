# Completion for fish: offers what the one for bash offers, which knows the keys. It is loaded under
# the name of each command.
set -g __ov_conf_data (dirname (realpath (status filename)))/../../bash-completion/completions/ov_conf

function __ov_conf_offer
    set -l current (commandline -ct)
    set -l offers (bash -c 'source "$1" && shift && _ov_conf_offer "$@"' bash \
        $__ov_conf_data (commandline -opc) "$current" 2>/dev/null)
    if test $status -eq 2
        __fish_complete_path "$current"
    else
        string join -- \n $offers
    end
end

complete -c (string replace -r '\.fish$' '' (status basename)) -f -a '(__ov_conf_offer)'
