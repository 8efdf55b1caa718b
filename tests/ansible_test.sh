#!/bin/bash
# The Ansible collection at work on twenty installations on this machine.
#   ansible_test.sh BUILD-FOLDER
set -eEu
build=$(realpath "$1")
tests=$(realpath "$(dirname "$0")")
if [ "$(id -u)" -ne 0 ]; then
    echo "left out: changing entries takes the super-user"
    exit 0
fi
root=$(realpath "$(mktemp -d)")
trap 'rm -rf "$root"' EXIT
trap 'echo "ansible_test.sh: line $LINENO: not so" >&2; cat "$root/log" >&2' ERR
cd "$root"
touch log ansible.cfg

# Nothing of the user's own, no network.
mkdir home
export HOME=$root/home ANSIBLE_HOME=$root/home ANSIBLE_CONFIG=$root/ansible.cfg
export ANSIBLE_LOCAL_TEMP=$root/home/local ANSIBLE_REMOTE_TEMP=$root/home/remote
export ANSIBLE_COLLECTIONS_PATH=$root/collections ANSIBLE_PIPELINING=1 ANSIBLE_FORKS=4
export ANSIBLE_NO_TARGET_SYSLOG=1 ANSIBLE_NOCOLOR=1 ANSIBLE_RETRY_FILES_ENABLED=0 LC_ALL=C.UTF-8

ansible-galaxy collection build "$tests/../ansible" --output-path . >log 2>&1
ansible-galaxy collection install --offline -p collections ov-gateway-*.tar.gz >>log 2>&1
ansible-doc --json ov.gateway.{ov_conf,ov_conf_info,ov_rights,ov_rights_info} >log 2>&1
[ "$(grep -cE '"(examples": "|return": \{|command_path": \{)' log)" -eq 12 ]
# Those of its tests that download nothing.
cd collections/ansible_collections/ov/gateway
ansible-test sanity --python "$(python3 -c 'import sys; print("%d.%d" % sys.version_info[:2])')" \
    --skip-test={ansible-doc,import,pep8,pylint,runtime-metadata,validate-modules,yamllint} >"$root/log" 2>&1
cd "$root"
# An installed collection is replaced when the version of the project has moved.
sed -n 's/^version: //p' "$tests/../ansible/galaxy.yml" >log
"$build/bin/ov_confctl" --version | sed 's/.* //; s/\.0*\([0-9]\)/.\1/g' | cmp - log

# The fleet: each gateway a folder with a file of its own mode and owner, and a second link to it.
for n in $(seq -w 20); do
    gateway=$root/gw$n
    mkdir -p "$gateway"/{etc/group,manager,template,logs/archive,mqueue,pqueue,aqueue,links}
    sed -e "s|^RootDirectory = .*|RootDirectory = $gateway/|" -e 's|\(Program\) = /.*|\1 = /bin/sh|' \
        -e 's|^PostfixQueueDirectory = .*|PostfixQueueDirectory = /tmp|' \
        "$tests/../samples/Tessary.conf" >"$gateway/Tessary.conf"
    chmod 640 "$gateway/Tessary.conf"
    chown 65534:65534 "$gateway/Tessary.conf" "$gateway/manager"
    ln "$gateway/Tessary.conf" "$gateway/links/Tessary.conf"
done
{ echo '[gateways]' && printf 'gw%s\n' $(seq -w 20); } >inventory
here=(-i inventory -e ansible_connection=local -e ansible_become=false
    -e 'ansible_python_interpreter={{ ansible_playbook_python }}')

# Owners, modes, inodes and contents of all that is no log.
fleet() {
    find gw* -type f -not -path '*/logs/*' -printf '%p %i %m %U ' -exec sha256sum {} \; | sort
}
unchanged() {
    fleet >after
    cmp before after
}
# play STATUS ARGUMENT...: runs a playbook, which has to end so.
play() {
    local wanted=$1 status=0
    shift
    ansible-playbook "${here[@]}" -e gateway_commands="$build/bin" \
        -e gateway_conf="$root/{{ inventory_hostname }}/Tessary.conf" "$@" >log 2>&1 || status=$?
    [ "$status" -eq "$wanted" ]
}
# recap HOSTS PATTERN: so many gateways end so.
recap() {
    [ "$(grep -cE "^gw[0-9]+ .*$2" log)" -eq "$1" ]
}
# The role at the fleet, whose directories are there.
site=("$tests/../ansible/examples/site.yml" -e gateway_root="$root/{{ inventory_hostname }}/" -e '{"gateway_directories": [],
    "gateway_conf_owner": "65534", "gateway_user": "65534", "gateway_group": "65534"}')

fleet >before
play 0 "${site[@]}" --check --diff --limit gw01,gw02
recap 2 'changed=2 .*failed=0'
[ "$(grep -c '^+\[SMTP\] SmtpPort = 2525' log)" -eq 2 ]
unchanged

# All changed, then none. The rest of each file stays, and so do its owner, mode and links.
without_rights=(-e '{"gateway_rights": {}}')
play 0 "${site[@]}" "${without_rights[@]}"
recap 20 'changed=1 .*failed=0'
for n in $(seq -w 20); do
    gateway=$root/gw$n
    sed -e 's/^SmtpPort = .*/SmtpPort = 2525/' -e 's/^MaxMessageSize = 20M/MaxMessageSize = 30M/' \
        -e 's/^GreetingMessage = .*/GreetingMessage = Welcome/' -e '/^ForwardMailAddress/d' \
        -e 's/^InternalDomains = .*/InternalDomains = example.com\&example.org/' \
        -e "/^QuarantineHardLink/a QueueDirectory = $gateway/" "$gateway"/Tessary.conf.*.bak | cmp - "$gateway/links/Tessary.conf"
    [ "$(stat -c '%a %u %h' "$gateway/Tessary.conf")" = '640 65534 2' ]
    [ "$(stat -c '%a %u %g' "$gateway/Tessary.lock")" = '640 0 65534' ]
    # The file, its backup and the lock: nothing private stays.
    [ "$(find "$gateway" -maxdepth 1 -type f | wc -l)" -eq 3 ]
    rm "$gateway"/Tessary.conf.*.bak
done
fleet >before
play 0 "${site[@]}" "${without_rights[@]}"
recap 20 'changed=0 .*failed=0'
unchanged

# A gateway with an invalid entry stops the roll-out; it and those behind it stay as they are.
mkdir host_vars
cat >host_vars/gw04 <<END
gateway_host_entries:
  port: {section: SMTP, key: SmtpPort, value: 2526}
  bad: {section: SMTP, key: MaxRecipients, value: many}
END
sed -i 's/^SmtpPort.*/SmtpPort = 24/' gw*/Tessary.conf
chown 65534:65534 gw*/Tessary.conf
fleet >before
play 2 "${site[@]}"
grep -q "$root/gw04/Tessary.conf: \[SMTP\] MaxRecipients = many: invalid value" log
fleet >after
[ "$(stat -c '%a %u' gw01/manager/taro.conf)" = '644 65534' ]
recap 1 'changed=2 .*failed=0'
recap 4 'changed=1 .*failed=0'
[ "$(comm -13 before after | cut -d/ -f1 | uniq | xargs)" = 'gw01 gw02 gw03 gw05 gw06' ]
rm -r host_vars

# The example as it stands, but for where it is; on machines that have nothing yet.
play 0 "$tests/../ansible/examples/site.yml" -i "$tests/../ansible/examples/inventory.yml" --limit gw2 \
    -e gateway_root="$root/new" -e gateway_conf="$root/new/Tessary.conf"
[ "$(stat -c %a new/manager new/Tessary.conf new/Tessary.lock new/manager/hanako.conf | xargs)" = '750 640 640 644' ]
"$build/bin/ov_confctl" -f new/Tessary.conf check --strict >log

# Twenty at once at the same file: each takes its turn, and nothing is lost.
keys=$build/share/ov-conf/keys
names=$(awk -F '\t' '$1 == "SMTP" && $2 != "AddReceivedField" && $3 ~ /^(digits: 0|boolean)/ { print $2 }' "$keys" | head -n 20 | paste -sd '|')
ansible "${here[@]}" -f 20 gateways -m ov.gateway.ov_conf -a "{\"path\": \"$root/gw05/Tessary.conf\",
    \"command_path\": \"$build/bin\", \"lock_timeout\": 300, \"entries\": [{\"section\": \"SMTP\", \"value\": 1,
    \"key\": \"{{ '$names'.split('|')[inventory_hostname[2:] | int - 1] }}\"}]}" >log 2>&1
[ "$(grep -c 'CHANGED' log)" -eq 20 ]
[ "$(grep -cE "^($names) = 1\$" gw05/Tessary.conf)" -eq 20 ]

# Refusals: a file stays as it is, whatever the step that fails.
mkdir broken
printf '#!/bin/sh\necho "ov_confctl: unknown command \"apply\"" >&2\nexit 2\n' >broken/old
printf '#!/bin/sh\nexec sleep 600\n' >broken/slow
printf '#!/bin/sh\necho ready\n' >broken/other
head -c 100 /dev/urandom >broken/machine
for name in broken/*; do
    install -D -m 755 "$name" "$name.d/ov_confctl"
done
touch held.lock
exec 9>held.lock
flock 9
fleet >before
play 0 "$tests/ansible/refusals.yml" -e broken="$root/broken" -e held_lock="$root/held.lock"
recap 1 'ok=6 .*failed=0'
unchanged

# What the modules do and answer.
printf '[NoSuch]\nTwice = 1\n[Smpt]\nTwice = 2\n[nosuch]\ntwice = 3\n[Forward]\nForwardMode = many\n' >>gw02/Tessary.conf
sed -i 's/^ForwardMode = .*/ForwardMode = many/' gw02/Tessary.conf
printf '[Manager]\nHoldMessage = no\nRealName = T\nCheckPcode = no\nPolicyKeyword = 4294967296\n' >gw02/manager/taro.conf
play 0 "$tests/ansible/single.yml" -e names_conf="$tests/names.conf"
grep -qxF 'GreetingMessage = " as it is "' gw02/Tessary.conf
# shellcheck disable=SC2016 # meant as it stands
grep -qxF 'FTPUserPassword = $HOME -x#pass' gw02/Tessary.conf
[ "$(find gw02/manager -type f)" = gw02/manager/hanako.conf ]
