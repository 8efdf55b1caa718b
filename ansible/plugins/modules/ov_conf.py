#!/usr/bin/python
"""Entries of the main configuration file, all of them or none."""

DOCUMENTATION = r"""
module: ov_conf
short_description: Set and delete entries of the gateway's configuration
description:
  - Sets and deletes entries of a C(Tessary.conf), all of them or, when one step fails, none.
  - The module takes the lock that ov_conf(8) recommends and looks up what is there. What differs is
    checked with C(ov_conf -c) where the key can be checked, changed in a private copy beside the
    file, and the copy is loaded with C(ov_conf -m) and with a fetch. Only then the same commands
    change the file itself, which keeps its owner, mode and links, while a private copy of the old
    one is beside it. When one of them fails, or somebody changed the file without the lock, the
    text that was there before is put back.
  - After a kill or a crash a part of the change may be in the file, and the copy stays as
    C(.NAME.before.XXXXXXXX). The next run warns of it. It holds secrets, if the file does.
  - The entries are taken in the order in which they are given, and the file has to load after each.
  - C(ov_conf) loads the file for a fetch. A file that holds an invalid value is to be mended by hand.
extends_documentation_fragment: ov.gateway.gateway
options:
  entries:
    description: The entries.
    type: list
    elements: dict
    required: true
    suboptions:
      section:
        description: The section, in any case. It is written as the list of keys has it.
        type: str
        required: true
      key:
        description: The key, in any case. It, too, is written as the list has it.
        type: str
        required: true
      value:
        description:
          - The value as it is to be read back, without control characters. The module writes double
            quotes around one that needs them, as for blanks at its ends.
          - Put it in quotes. YAML reads C(12:30), C(0640) and C(0x1F) as the numbers 750, 416 and 31.
            Its C(true) and C(false) are written C(yes) and C(no).
        type: raw
      secret:
        description:
          - The value, in the place of I(value), where neither the reply of the module nor the
            system log of the gateway may show it. With the keys C(FTPUserPassword) and
            C(TSAProxy_pass) they do not show I(value) either.
          - While C(ov_conf) runs, who may list the processes of the gateway sees it all the same.
        type: raw
      state:
        description:
          - With C(absent) every entry of that name is deleted.
        type: str
        choices: [present, absent]
        default: present
      check:
        description:
          - Whether to ask C(ov_conf -c). It refuses a few values that load, such as a number beyond
            the default of a limit that is configured otherwise. Loading has the last word.
        type: bool
        default: true
  backup:
    description: Keep the text of before beside the file, with its owner and mode.
    type: bool
    default: false
notes:
  - What differs takes the super-user, in check mode, too.
  - In check mode the private copy is made, loaded and removed. To load is not only to read, see
    ov_conf(8).
  - The diff shows the entries that change, and no secrets.
author: The ov_conf maintainers (@ov)
"""

EXAMPLES = r"""
- name: The listener
  ov.gateway.ov_conf:
    entries:
      - {section: SMTP, key: SmtpPort, value: 2525}
      - {section: SMTP, key: MaxMessageSize, value: 30M}
      - {section: Forward, key: ForwardMailAddress, state: absent}
    backup: true

- name: The account on the audit host
  ov.gateway.ov_conf:
    entries:
      - {section: Cooperation, key: FTPUserPassword, secret: "{{ vault_audit_password }}"}
"""

RETURN = r"""
changed_entries:
  description: The section and the key of each entry that was, or would be, changed.
  returned: success
  type: list
  elements: dict
  sample: [{section: SMTP, key: SmtpPort}]
backup_file:
  description: The name of the backup.
  returned: when one was asked for and made
  type: str
"""

import glob
import os

from ansible_collections.ov.gateway.plugins.module_utils import gateway as ov
from ansible_collections.ov.gateway.plugins.module_utils.gateway import Failure


class Entry:
    """An entry as it is wanted: `value` is None when it is to be absent."""

    def __init__(self, option, keys):
        self.folded = ov.folded(option['section'], option['key'])
        self.row = keys.get(self.folded)
        names = self.row or option
        self.section, self.key = names['section'], names['key']
        self.name = ov.shown(self.section, self.key)
        self.check = option['check']
        self.secret = option['secret'] is not None or ov.is_secret(self.key)
        self.value = None
        for what, text in (('section', self.section), ('key', self.key)):
            ov.refuse_control('%s %r' % (what, text), text)
            if not text or '"' in text:
                raise Failure('"%s" is no name of a %s' % (text, what))
        given = [option[name] for name in ('value', 'secret') if option[name] is not None]
        if option['state'] == 'absent':
            if given:
                raise Failure('%s: a value for an entry that is to be absent' % self.name)
            return
        if len(given) != 1:
            raise Failure('%s: either value or secret is wanted ("" is the empty value)' % self.name)
        # ov_conf writes a key without quotes.
        if not ov.BARE_KEY.fullmatch(self.key) or ov.NUMBER.fullmatch(self.key):
            raise Failure('%s: ov_conf cannot write that key' % self.name)
        self.value = ov.value_text(self.name, given[0])


def wanted(module, keys):
    entries = []
    for option in module.params['entries']:
        entry = Entry(option, keys)
        if any(other.folded == entry.folded for other in entries):
            raise Failure('%s is given twice' % entry.name)
        if entry.value is not None and not entry.row:
            module.warn('%s is not among the keys that the gateway knows' % entry.name)
        entries.append(entry)
    return entries


def difference(path, entries, text):
    """The entries that change, before and after, for --diff."""
    sides = dict(before='', after='')

    def tell(side, name, value):
        sides[side] += '%s = %s\n' % (name, ov.printable(ov.as_written(value)))

    for entry in entries:
        found = [(ov.shown(section, key), ov.as_read(rest))
                 for _line, section, key, rest in ov.entries_of(text)
                 if ov.folded(section, key) == entry.folded]
        if entry.value is not None:
            del found[1:]
            tell('after', entry.name, '(secret, new)' if entry.secret else entry.value)
        for name, value in found:
            tell('before', name, '(secret)' if entry.secret else value)
    return dict(sides, before_header=path, after_header=path)


def change(gateway, path, entry):
    """Changes one entry of a file through the command."""
    where = ['-f', path, '-s', entry.section, '-k', entry.key]
    try:
        if entry.value is not None:
            gateway.asked('ov_conf', *where, '-r', '--', ov.as_written(entry.value))
            return
        while gateway.fetch(path, entry.section, entry.key) is not None:
            gateway.asked('ov_conf', *where, '-d')
    except Failure as failure:
        raise Failure('%s: %s' % (entry.name, failure)) from None


def check(gateway, path, entry):
    if entry.value is None or not entry.check or not entry.row or entry.row['check'] == '-':
        return
    status, _reply, message = gateway.run('ov_conf', '-f', path, '-s', entry.section,
                                          '-k', entry.key, '-c', '--', entry.value)
    if status != 0:
        raise Failure('%s: %s (-c accepts: %s; "check: false" leaves -c out)'
                      % (entry.name, message, entry.row['check']))


def validate(gateway, path, entries):
    """Loads a file and compares what it says with what is wanted."""
    gateway.asked('ov_conf', '-f', path, '-m')
    for entry in entries:
        found = gateway.fetch(path, entry.section, entry.key)
        if found != entry.value:
            raise Failure('%s: %s' % (entry.name, 'ov_conf cannot write that section'
                                      if found is None else
                                      'the value would not read back as it is given'))


def tried(gateway, text, entries):
    """The text that a file with `text` has after the changes, tried on a private copy."""
    copy = ov.private_file(gateway.path, 'check', text)
    gateway.aliases[copy] = gateway.path
    try:
        for entry in entries:
            check(gateway, copy, entry)
            change(gateway, copy, entry)
        validate(gateway, copy, entries)
        after, _status = ov.read_file(copy)
        ov.refuse_other_changes(text, after, {entry.folded for entry in entries})
        return after
    finally:
        for name in [copy] + glob.glob(glob.escape(copy) + '.tmp.*'):
            os.unlink(name)


def perform(gateway, before, after, entries, signals):
    """Changes the file itself."""
    with ov.all_or_nothing(gateway.path, before, after):
        for entry in entries:
            signals.refuse()
            change(gateway, gateway.path, entry)
        signals.refuse()


def work(module):
    gateway = ov.Gateway(module)
    entries = wanted(module, gateway.keys)
    result = dict(changed=False, changed_entries=[])
    with gateway.locked(exclusive=not module.check_mode):
        ov.warn_of_copies(module, gateway.path)
        before, status = gateway.read()
        current = {entry.folded: gateway.fetch(gateway.path, entry.section, entry.key)
                   for entry in entries}
        differing = [entry for entry in entries if current[entry.folded] != entry.value]
        result['diff'] = difference(gateway.path, differing, before)
        if not differing:
            return result
        ov.refuse_others()
        with ov.HeldSignals() as signals:
            after = tried(gateway, before, differing)
            if not module.check_mode:
                if module.params['backup']:
                    result['backup_file'] = ov.backup(gateway.path, before, status)
                try:
                    perform(gateway, before, after, differing, signals)
                except Failure as failure:
                    if 'backup_file' in result:
                        raise Failure('%s; the backup is %s'
                                      % (failure, result['backup_file'])) from None
                    raise
        result['changed'] = True
        result['changed_entries'] = [dict(section=entry.section, key=entry.key)
                                     for entry in differing]
    return result


def main():
    ov.run_module(ov.Module(
        argument_spec=dict(
            ov.COMMON_OPTIONS,
            entries=dict(type='list', elements='dict', required=True, no_log=False, options=dict(
                section=dict(type='str', required=True),
                key=dict(type='str', required=True, no_log=False),
                value=dict(type='raw'),
                secret=dict(type='raw', no_log=True),
                state=dict(type='str', choices=['present', 'absent'], default='present'),
                check=dict(type='bool', default=True),
            )),
            backup=dict(type='bool', default=False),
        ),
        supports_check_mode=True,
    ), work)


if __name__ == '__main__':
    main()
