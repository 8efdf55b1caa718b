#!/bin/bash
# What check-names finds with the list of keys.
#   names_test.sh SHARE-FOLDER
set -u
share=$(realpath "$1")
keys=$share/ov-conf/keys
tests=$(realpath "$(dirname "$0")")
check_names=$tests/../samples/check-names
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
cd "$root" || exit 1
failures=0

# same NAME WANTED GOT
same() {
    if [ "$2" != "$3" ]; then
        printf '%s\n' "$1:" "$(diff <(echo "$2") <(echo "$3"))" >&2
        failures=$((failures + 1))
    fi
}

cp "$tests/names.conf" written
found=$("$check_names" -k "$keys" written)
same 'status with something found' 1 $?
same 'what is found' 'written:2: Early stands in front of the first section
written:4: unknown key [SMTP] SmptPort
written:5: [SMTP] smtpport stands in line 3 already
written:7: unknown key [SMTP] 123456789
written:10: unknown section [Mial]
written:18: unknown key [check_mail] Ports of call
written:23: [Log] LogPerm stands in line 22 already
written:27: [Log] LogLevel stands in line 25 already
written:29: unknown key [Log] Log?s' "$found"

# The samples hold nothing unknown, whatever is uncommented in them.
sed 's/^#\([A-Za-z]\)/\1/' "$share/ov-conf/defaults.conf" >defaults
for sample in "$tests/../samples/Tessary.conf" defaults; do
    found=$("$check_names" -k "$keys" "$sample")
    same "status for $sample" 0 $?
    same "$sample" '' "$found"
done
printf '\357\273\277[SMTP]\nSmtpPort = 1\n[Mail]\n' >marked
found=$("$check_names" -k "$keys" marked)
same 'a byte order mark' 'marked:1: a byte order mark hides what stands in this line
marked:2: SmtpPort stands in front of the first section' "$found"
"$check_names" -k "$keys" missing 2>/dev/null
same 'status without a file' 2 $?
"$check_names" -k written written 2>/dev/null
same 'status without a list' 2 $?
exit $((failures != 0))
