#!/bin/bash
# Makes the Debian package, unpacks it into a folder, and uses what is in it.
#   package_test.sh BUILD-FOLDER
set -eu
build=$(realpath "$1")
tests=$(realpath "$(dirname "$0")")
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
trap 'echo "package_test.sh: line $LINENO: not so" >&2' ERR
cd "$root"

cpack --config "$build/CPackConfig.cmake" -G DEB -B "$root" >/dev/null
mkdir unpacked
dpkg-deb -x ./*.deb unpacked
usr=$root/unpacked/usr

# One executable, and six links to it.
[ "$(find "$usr/sbin" -type f)" = "$usr/sbin/ov_conf" ]
[ "$(find "$usr/sbin" -type l -lname ov_conf | wc -l)" -eq 6 ]
[ "$(find "$usr/sbin" | wc -l)" -eq 8 ]
# A page for each of the names, and one for the file.
[ "$(find "$usr/share/man/man8" "$usr/share/man/man5" -name '*.[58]' -exec test -s {} \; -print | wc -l)" -eq 8 ]

# Each name is a command: the search side has a version of its own.
for name in ov_conf ov_admconf ov_mgrconf ov_sysadmconf; do
    [ "$("$usr/sbin/$name" -v | head -n 1)" = ORVANTA ]
done
for name in srch_admconf srch_mgrconf srch_sysadmconf; do
    [ "$("$usr/sbin/$name" -v | head -n 1)" = ORVANTA/S ]
done

# The script for typing errors finds the list of keys, and none in the sample.
"$usr/share/doc/ov-conf/examples/check-names" "$usr/share/doc/ov-conf/examples/Tessary.conf"

# The samples are configurations: one entry of each is found, the commented one is not.
mkdir etc template logs mqueue pqueue aqueue
for sample in Tessary.conf defaults.conf; do
    {
        printf '[Directories]\nRootDirectory = %s\nQueueDirectory = %s\n' "$root" "$root"
        sed 's|^PostfixQueueDirectory = .*|PostfixQueueDirectory = /tmp|' \
            "$usr/share/doc/ov-conf/examples/$sample"
        printf '[Mail]\nInternalDomains = example.com\n'
    } >"$sample"
done
[ "$("$usr/sbin/ov_conf" -f Tessary.conf -s SMTP -k MaxMessageSize)" = '1: 20M' ]
[ "$("$usr/sbin/ov_conf" -f defaults.conf -s SMTP -k SmtpPort)" = '0: not found' ]
[ "$("$usr/sbin/ov_conf" -f defaults.conf -s SMTP -k SmtpPort -a)" = '1: 25' ]

"$tests/completion_test.sh" "$usr/sbin" "$usr/share"
