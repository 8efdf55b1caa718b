#!/bin/bash
# What the completion offers for half-written commands, in a throwaway installation.
#   completion_test.sh FOLDER-OF-THE-COMMANDS SHARE-FOLDER
set -u
bin=$1
share=$2
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
mkdir "$root/etc" "$root/template" "$root/queue" "$root/people" "$root/admin"
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

expect '-a -c -d -f -k -l -m -p -r -s -v' ov_conf -
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
expect '-f -g -m -u -v' ov_mgrconf -
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
expect '' ov_admconf -m Group =
exit $((failures != 0))
