#!/bin/bash
# What the completion offers for half-written commands, in a throwaway installation.
#   completion_test.sh FOLDER-OF-THE-COMMANDS SHARE-FOLDER
set -u
bin=$(realpath "$1")
share=$2
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
mkdir -p "$root/etc/group" "$root/template" "$root/queue" "$root/people" "$root/admin"
touch "$root/etc/group/sales.addr" "$root/etc/group/support.addr" "$root/etc/group/notes"
touch "$root/people/taro.conf" "$root/people/hanako.conf" "$root/people/notes" "$root/admin/jiro.conf"
# Names that a shell would run or split, and others that the commands refuse, beside one that has it all.
# shellcheck disable=SC2016 # nothing is to be expanded
for name in '$(touch pwned)' 'a b' 'a;b' -a a- ..a a. é $'a\nb' $'a.conf\nb' i.9-Z_; do
    touch "$root/people/$name.conf"
done
cat >"$root/conf" <<END
[Directories]
RootDirectory = $root
QueueDirectory = $root/queue
Manager_Dir = people
[Mail]
InternalDomains = example.com
END
# The file is loaded from inside a function when a command is completed for the first time.
load() {
    # shellcheck source=/dev/null
    source "$share/bash-completion/completions/ov_conf"
}
load
export PATH=$bin:$PATH

failures=0
# same WHAT FOUND WANTED
same() {
    [ "$2" = "$3" ] || {
        printf '%s\n    found:  %s\n    wanted: %s\n' "$@" >&2
        failures=$((failures + 1))
    }
}
# expect REPLIES WORD...: completes the last word; bash hands over "=" as a word of its own.
expect() {
    local expected=$1 function
    shift
    COMP_WORDS=("$@")
    COMP_CWORD=$(($# - 1))
    function=$(complete -p "${1##*/}" | sed 's/.* -F \([^ ]*\) .*/\1/')
    COMPREPLY=()
    "$function"
    same "$*" "$(IFS=,; echo "${COMPREPLY[*]}")" "${expected// /,}"
}

# The options that a command takes are those that the completion offers and the manual describes.
# "-?" is none: it ends the command before anything is done, be there two when the first is an argument.
for command in ov_conf ov_mgrconf; do
    taken=
    for letter in {a..z} {A..Z} {0..9}; do
        "$bin/$command" "-$letter" '-?' '-?' 2>&1 | grep -q "invalid option -- '$letter'" || taken+=" -$letter"
    done
    expect "${taken# }" $command -
    described=$(gzip -cdf "$share/man/man8/$command.8"* | sed -n 's/^\.It Fl \(.\).*/-\1/p' | paste -sd ' ')
    same "options in the manual of $command" "$described" "${taken# }"
done
for command in check show diff explain apply recover; do
    taken=$("$bin/ov_confctl" $command --help | grep -o -- '--[a-z][a-z-]*' | sort -u | xargs)
    expect "-f -h --file --help $taken" ov_confctl -f "$root/conf" $command -
    described=$(gzip -cdf "$share/man/man8/ov_confctl.8"* | sed -n "/^\.Sh DESC/q; /^\.Cm $command/,/^\.Nm/p" |
        grep -o 'Fl -[a-z-]*' | sed 's/Fl /-/' | sort -u | xargs)
    same "options in the manual of ov_confctl $command" "$described" "$taken"
done
expect 'check show diff explain apply recover' ov_confctl --file "$root/conf" ''
expect 'SMTP Screening SystemControl Search' ov_confctl show --origin s
expect 'Debug Debug.SmtpForkDelay Debug.StoreForkDelay Debug.SweepForkDelay Debug.NoCore' ov_confctl show DEB
expect 'Manager.ViewManagerLog' ov_confctl show manager.viewm
expect 'HoldMessage HoldMessages' ov_confctl explain holdm
expect 'manager:' ov_confctl show --rights = m
expect 'hanako i.9-Z_ taro' ov_confctl --file = "$root/conf" show --rights manager :
expect "$root/conf" ov_confctl check --json "$root/co"
expect 'SMTP.ListenQueue=' ov_confctl apply --wait 5 smtp.listenq
expect 'sendmail' ov_confctl apply --diff SMTP.MailSubmissionProgram = s
expect 'Forward.ForwardMode' ov_confctl apply --delete forward.forwardmo
expect 'HoldMessage=' ov_confctl --rights manager : taro apply holdm
expect "$root/conf" ov_confctl apply "$root/co"
expect 'SMTP Screening SystemControl Search' ov_conf -s S
expect 'SmtpForkDelay StoreForkDelay SweepForkDelay NoCore' ov_conf -s dEBUG -k ''
expect 'NoCore' ov_conf -s '"Debug"' -k no
expect 'NoCore' ov_conf -sDebug -k no
expect '' ov_conf -s NoSuchSection -k ''
expect '' ov_conf -k ''
expect 'hanako i.9-Z_ taro' ov_mgrconf -f "$root/conf" -u ''
expect 'taro' "$bin/ov_mgrconf" -f "$root/conf" -u T
expect 'jiro' ov_admconf "-f$root/conf" -gu ''
expect '' srch_mgrconf -f "$root/conf" -u ''
expect '' ov_mgrconf -f "$root/none" -u ''
expect 'Hold Hold+ HoldList+ HoldList HoldMessage HoldAttach HoldReason HoldForward HoldApprove HoldCancel' \
    srch_sysadmconf -u taro hold
expect 'HoldList= HoldMessage= HoldReason= HoldForward= HoldApprove= HoldCancel=' \
    ov_sysadmconf -u taro -m Hold
expect 'no' ov_admconf -m HoldList = n
# Values where they can be listed; those that a check takes may be fewer.
expect 'postfix' ov_conf -s SMTP -k MailSubmissionProgram -r P
expect 'yes no' ov_conf -r -s SMTP -k Limit2GB -- ''
expect '' ov_conf -s SMTP -k Limit2GB -c ''
expect 'none weak strong' ov_conf -s Screening -k MIMEngLevel -r ''
expect 'none' ov_conf -s Screening -k MIMEngLevel -c ''
# A mode offers the keys that it works on.
expect 'MaxConnections MaxMessageSize' ov_conf -c -s SMTP -k max
expect 'AddReceivedField' ov_conf -s SMTP -a -k add
expect '' ov_conf -l -s SMTP -k GreetingMessage
expect "$root/conf" ov_conf -s SMTP -k SmtpPort -l "$root/co"
expect "$root/conf" ov_conf -a -s SMTP -k SmtpPort "$root/co"
# Groups, one after the other.
expect 'sales support' ov_admconf -f "$root/conf" -u taro -m ExcludeGroup = sales : s
expect '' ov_admconf -f "$root/conf" -m RealName = s

# Names of files that may mean something else, and nothing to wait for.
cd "$root" && exec </dev/null
for name in conf=new.conf -; do
    cp conf "./$name"
    expect 'hanako i.9-Z_ taro' ov_mgrconf -f "'$name'" -u ''
done
exit $((failures != 0))
