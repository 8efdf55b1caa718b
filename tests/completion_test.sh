#!/bin/bash
# What the completion offers for half-written commands, in a throwaway installation.
#   completion_test.sh FOLDER-OF-THE-COMMANDS SHARE-FOLDER
set -u
bin=$1
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

failures=0
# expect REPLIES WORD...: completes the last word; bash hands over "=" as a word of its own.
expect() {
    local expected=$1 function
    shift
    COMP_WORDS=("$@")
    COMP_CWORD=$(($# - 1))
    function=$(complete -p "${1##*/}" | sed 's/.* -F \([^ ]*\) .*/\1/')
    COMPREPLY=()
    "$function"
    if [ "${COMPREPLY[*]}" != "$expected" ] || [ ${#COMPREPLY[@]} -ne "$(wc -w <<<"$expected")" ]; then
        printf '%s\n    offers: %s\n    wanted: %s\n' "$*" "${COMPREPLY[*]}" "$expected" >&2
        failures=$((failures + 1))
    fi
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
    if [ "$described" != "${taken# }" ]; then
        printf '%s takes %s\n    described: %s\n' $command "${taken# }" "$described" >&2
        failures=$((failures + 1))
    fi
done
expect 'SMTP Screening SystemControl Search' ov_conf -s S
expect 'Debug' ov_conf -s debu
expect 'SmtpForkDelay StoreForkDelay SweepForkDelay NoCore' ov_conf -s dEBUG -k ''
expect 'MaxSearchProcs_MIN MaxSearchProcs_MAX MaxSearchProcs MaxSearchMessages_MIN MaxSearchMessages_MAX MaxSearchMessages' \
    ov_conf -f "$root/conf" -s Search -k maxsearch
expect 'NoCore' ov_conf -s '"Debug"' -k no
expect 'NoCore' ov_conf -sDebug -k no
expect '' ov_conf -s NoSuchSection -k ''
expect '' ov_conf -k ''
expect "$root/conf" ov_conf -f "$root/co"
expect 'hanako i.9-Z_ taro' ov_mgrconf -f "$root/conf" -u ''
expect 'taro' "$bin/ov_mgrconf" -f "$root/conf" -u T
expect 'jiro' ov_admconf -f "$root/conf" -u ''
expect 'jiro' ov_admconf "-f$root/conf" -gu ''
expect 'jiro' ov_admconf -f "'$root/conf'" -u j
expect '' srch_mgrconf -f "$root/conf" -u ''
expect '' ov_mgrconf -f "$root/none" -u ''
expect 'Hold Hold+ HoldList+ HoldList HoldMessage HoldAttach HoldReason HoldForward HoldApprove HoldCancel' \
    srch_sysadmconf -u taro hold
expect 'HoldList= HoldMessage= HoldReason= HoldForward= HoldApprove= HoldCancel=' \
    ov_sysadmconf -u taro -m Hold
expect 'PolicyAttachmentSet= PolicyKeywordSet= PolicyACLRule= PolicyAttachment= PolicyKeyword=' \
    ov_admconf -m Policy
expect 'yes no' ov_admconf -m HoldList =
expect 'no' ov_admconf -m HoldList = n
expect 'HoldList=yes HoldList=no' ov_admconf -gm HoldList=
expect '' ov_conf -s SMTP -k SmtpPort -c ''
# Values where they can be listed; those that a check takes may be fewer.
expect 'yes no' ov_conf -s smtp -k ADDReceivedField -c ''
expect 'postfix' ov_conf -s SMTP -k MailSubmissionProgram -r P
expect 'yes no' ov_conf -r -s SMTP -k Limit2GB -- ''
expect '' ov_conf -s SMTP -k Limit2GB -c ''
expect 'none weak strong' ov_conf -s Screening -k MIMEngLevel -r ''
expect 'none' ov_conf -s Screening -k MIMEngLevel -c ''
expect '-a -c -d -f -k -l -m -p -r -s -v' ov_conf -s SMTP -r -
# A mode offers the keys that it works on.
expect 'MaxConnections MaxMessageSize' ov_conf -c -s SMTP -k max
expect 'AddReceivedField' ov_conf -s SMTP -a -k add
expect '' ov_conf -l -s SMTP -k GreetingMessage
expect 'GreetingMessage' ov_conf -d -s SMTP -k Greet
expect "$root/conf" ov_conf -s SMTP -k SmtpPort -l "$root/co"
expect "$root/conf" ov_conf -a -s SMTP -k SmtpPort "$root/co"
# Groups, one after the other.
expect '' ov_admconf -m Group =
expect 'sales support' ov_admconf -f "$root/conf" -m Group =
expect 'sales support' ov_admconf -f "$root/conf" -u taro -m ExcludeGroup = sales : s
expect 'support' ov_admconf -f "$root/conf" -m SelectGroup = sales : sU
expect 'Group=sales:support' ov_admconf -f "$root/conf" -m Group=sales:su
expect '' ov_admconf -f "$root/conf" -m RealName = s

# offers_in SHELL WORD...: what another shell offers for the last word.
offers_in() {
    local shell=$1
    shift
    # shellcheck disable=SC2016 # is for the other shell
    case $shell in
    zsh)
        zsh -f -c 'fpath=($1 $fpath); shift; autoload -U _ov_conf
            compadd() { [[ $2 == -S ]] && shift 2; print -l -- "${@[3,-1]}"; }
            _files() { print files; }
            words=("$@") CURRENT=$# PREFIX=${@[-1]}; _ov_conf' zsh "$share/zsh/vendor-completions" "$@"
        ;;
    fish)
        fish -N -c 'source $argv[1]; complete -C $argv[2]' \
            "$share/fish/vendor_completions.d/$1.fish" "$*"
        ;;
    esac
}
# expect_in SHELL REPLIES WORD...: the replies sorted.
expect_in() {
    local shell=$1 expected=$2 offers
    shift 2
    offers=$(offers_in "$shell" "$@" | sed '/^$/d' | sort | paste -sd ' ')
    if [ "$offers" != "$expected" ]; then
        printf '%s: %s\n    offers: %s\n    wanted: %s\n' "$shell" "$*" "$offers" "$expected" >&2
        failures=$((failures + 1))
    fi
}
for shell in zsh fish; do
    if ! command -v "$shell" >/dev/null; then
        printf '%s:%d: Skipped\n%s is not installed\n' "$0" $LINENO "$shell" # as scripts/test wants it
        continue
    fi
    # Names of files are what the shell itself offers.
    files=$([ "$shell" = zsh ] && echo files || echo "$root/conf")
    expect_in "$shell" "$files" ov_conf -f "$root/co"
    expect_in "$shell" 'Debug' ov_conf -s debu
    expect_in "$shell" 'none strong weak' ov_conf -s Screening -k MIMEngLevel -r ''
    expect_in "$shell" '' ov_conf -s SMTP -k SmtpPort -c ''
    expect_in "$shell" 'jiro' ov_admconf -f "$root/conf" -u ''
    expect_in "$shell" 'HoldReason=' ov_admconf -m HoldR
    expect_in "$shell" 'Group=sales:support' ov_admconf -f "$root/conf" -m Group=sales:Su
done

# Names of files that mean something else among the arguments of awk, which has no input to wait for.
cd "$root" && exec </dev/null
for name in conf=new.conf -; do
    cp conf "./$name"
    expect 'hanako i.9-Z_ taro' ov_mgrconf -f "'$name'" -u ''
done
exit $((failures != 0))
