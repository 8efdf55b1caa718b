#!/bin/bash
# Makes the packages, looks at them, unpacks that of Debian into a folder, and uses what is in it.
#   package_test.sh BUILD-FOLDER
set -eu
build=$(realpath "$1")
tests=$(realpath "$(dirname "$0")")
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
trap 'echo "package_test.sh: line $LINENO: not so" >&2' ERR
cd "$root"
same() { [ "$1" = "$2" ] || ! printf 'found:  %s\nwanted: %s\n' "$@" >&2; }

# The source package is enough for that of Debian. What the builder keeps to itself is for all in the package.
begin=$(date -u +%Y%m%d.%H%M%S)
umask 077
{
    cpack --config "$build/CPackSourceConfig.cmake" -B sources && tar -xf sources/*.tar.gz &&
        (cd ov-conf-* && DEB_BUILD_OPTIONS=nocheck dpkg-buildpackage -us -uc -b) &&
        cpack --config "$build/CPackConfig.cmake" -G 'TGZ;RPM' -B others
} >log 2>&1 || {
    cat log >&2
    false
}
package=$(echo ov-conf_*.deb)
mkdir unpacked
dpkg-deb -x "$package" unpacked
usr=$root/unpacked/usr
lintian --fail-on error,warning ./*.changes
ls ov-conf-dbgsym_*.deb >log

# It is newer than those that were made before, also by cpack.
version=$(dpkg-deb -f "$package" Version)
same "${version%%+*}" "$("$usr/sbin/ov_confctl" --version | cut -d ' ' -f 2)"
dpkg --compare-versions "$version" ge "${version%%+*}+$begin"
dpkg --compare-versions "$version" gt "${version%%+*}-$begin"
# Later releases of the libraries will do; what is inside is named.
same "$(dpkg-deb -f "$package" Depends | sed 's/lib[a-z]*[0-9.]* (>= [0-9.:-]*)\(, \)*//g')" ''
same "$(dpkg-deb -f "$package" Built-Using Static-Built-Using | grep -Eo 'gcc-|json' | xargs)" 'gcc- json'
# Folders, files and links
same "$(dpkg-deb -c "$package" | cut -c 1-10 | sort -u | xargs)" '-rw-r--r-- -rwxr-xr-x drwxr-xr-x lrwxrwxrwx'
# The others have the same files, save what Debian compresses, or has elsewhere.
names() {
    grep -Ev '/$|build-id|copyright|changelog' |
        sed -E 's#^(\./|/)?(usr|ov-conf[^/]*)/##; s/\.gz$//; s/vendor-completions/site-functions/' | sort
}
(cd unpacked && find . ! -type d) | names >wanted
tar -tf others/*.tar.gz | names | diff - wanted >&2
rpm -qp --qf '[%{FILEMODES:perms}%{FILENAMES}\n]' others/*.rpm | sed -n 's/^[-l][^/]*//p' | names | diff - wanted >&2

# Two executables, and six links to one: the search side has a version of its own.
same "$(find "$usr/sbin" -type f -printf '%f\n' | sort | xargs)" 'ov_conf ov_confctl'
same "$(find "$usr/sbin" -type l -lname ov_conf | wc -l)" 6
same "$(for name in "$usr"/sbin/*conf; do "$name" -v | head -n 1; done | sort | uniq -c | xargs)" \
    '4 ORVANTA 3 ORVANTA/S'
# A compressed page for each of the names, and one for the file.
same "$(find "$usr"/share/man/man[58]/* -exec gzip -t {} \; -print | wc -l)" 9
[ -f "$usr/share/zsh/vendor-completions/_ov_conf" ]

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
# Nor is a name unknown, whatever is uncommented.
same "$(sed 's/^#\([A-Za-z]\)/\1/' defaults.conf | "$usr/sbin/ov_confctl" check /dev/stdin | grep unknown)" ''

"$tests/completion_test.sh" "$usr/sbin" "$usr/share"
