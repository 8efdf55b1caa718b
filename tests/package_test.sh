#!/bin/bash
# Makes the Debian package, looks at it, unpacks it into a folder, and uses what is in it.
#   package_test.sh BUILD-FOLDER
set -eu
build=$(realpath "$1")
tests=$(realpath "$(dirname "$0")")
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
trap 'echo "package_test.sh: line $LINENO: not so" >&2' ERR
cd "$root"
same() { [ "$1" = "$2" ] || ! printf 'found:  %s\nwanted: %s\n' "$@" >&2; }

# Makes a package in a folder, and refuses when there is nobody to write to.
pack() {
    cpack --config "$build/CPackConfig.cmake" -G DEB -B "$root/$1" \
        -D CPACK_PACKAGE_CONTACT="${2-The maintainers of ov_conf <ov_conf@example.com>}" >"$1.log" 2>&1
}
for contact in '' 'Taro <taro@localhost>' 'Taro <taro@localhost.localdomain>' 'Taro <taro@x>'; do
    if pack nobody "$contact"; then false; fi
    grep -q 'cmake -D OV_CONTACT=' nobody.log
done
pack old
# What the builder keeps to itself is for all in the package.
(umask 077 && pack new)
package=$(echo new/*.deb)
mkdir unpacked
dpkg-deb -x "$package" unpacked
usr=$root/unpacked/usr

lintian --fail-on error,warning "$package"
# It is newer than one that was made before, and than those that had no revision yet.
version_of() { dpkg-deb -f "$1" Version; }
dpkg --compare-versions "$(version_of "$package")" gt "$(version_of old/*.deb)"
dpkg --compare-versions "$(version_of old/*.deb)" gt 7.1.02
# Later releases of the libraries will do.
same "$(dpkg-deb -f "$package" Depends | sed 's/libc[0-9.]* (>= [0-9.]*)\(, \)*//g')" ''
# Folders, files and links; the links are not counted as copies of the program.
same "$(dpkg-deb -c "$package" | cut -c 1-10 | sort -u | xargs)" '-rw-r--r-- -rwxr-xr-x drwxr-xr-x lrwxrwxrwx'
[ "$(dpkg-deb -f "$package" Installed-Size)" -lt "$(($(du -sk --apparent-size "$usr" | cut -f 1) + 50))" ]

# Two executables, and six links to one: the search side has a version of its own.
same "$(find "$usr/sbin" -type f -printf '%f\n' | sort | xargs)" 'ov_conf ov_confctl'
same "$(find "$usr/sbin" -type l -lname ov_conf | wc -l)" 6
same "$(for name in "$usr"/sbin/*conf; do "$name" -v | head -n 1; done | sort | uniq -c | xargs)" \
    '4 ORVANTA 3 ORVANTA/S'
# A compressed page for each of the names, and one for the file.
same "$(find "$usr"/share/man/man[58]/* -exec gzip -t {} \; -print | wc -l)" 9
[ -f "$usr/share/zsh/vendor-completions/_ov_conf" ]
[ -f "$usr/share/fish/vendor_completions.d/ov_confctl.fish" ]

# The script for typing errors finds the list of keys, and none in the sample.
"$usr/share/doc/ov-conf/examples/check-names" "$usr/share/ov-conf/Tessary.conf"

# The samples are configurations: one entry of each is found, the commented one is not.
mkdir etc template logs mqueue pqueue aqueue
answer() {
    {
        printf '[Directories]\nRootDirectory = %s\nQueueDirectory = %s\n' "$root" "$root"
        sed 's|^PostfixQueueDirectory = .*|PostfixQueueDirectory = /tmp|' \
            "$usr/share/ov-conf/$1"
        printf '[Mail]\nInternalDomains = example.com\n'
    } >"$1"
    "$usr/sbin/ov_conf" -f "$1" -s SMTP -k "$2"
}
same "$(answer Tessary.conf MaxMessageSize)" '1: 20M'
same "$(answer defaults.conf SmtpPort)" '0: not found'
same "$("$usr/sbin/ov_confctl" check defaults.conf)" 'defaults.conf: 0 errors, 0 warnings'

"$tests/completion_test.sh" "$usr/sbin" "$usr/share"
