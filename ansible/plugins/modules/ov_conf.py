#!/usr/bin/python
DOCUMENTATION = r"""
module: ov_conf
short_description: Set and delete entries of the gateway's configuration
version_added: 1.0.0
description:
  - Hands the entries to C(ov_confctl apply), which makes all of the changes or none, under the lock.
  - Nothing is changed if the file would have an error that it does not have yet, or if an entry that
    is named would have one. So a file that does not load can be mended.
  - What means the same as before is left as it is.
extends_documentation_fragment: [ov.gateway.gateway, ov.gateway.gateway.lock]
options:
  entries:
    description: The entries.
    type: list
    elements: dict
    required: true
    suboptions:
      section:
        description: The section, in any case.
        type: str
        required: true
      key:
        description: The key, in any case.
        type: str
        required: true
      value:
        description:
          - The value as it is to be read back, without control characters, of at most 8191 bytes; or
            a list of texts, if the key holds a list.
          - Put it in quotes. YAML reads C(12:30), C(0640) and C(0x1F) as the numbers 750, 416 and 31.
            Its C(true) and C(false) are written C(yes) and C(no).
        type: raw
      secret:
        description: The value, where neither the reply nor any log may show it. Those of passwords are never shown.
        type: raw
      state:
        description: With C(absent) every entry of that name is deleted.
        type: str
        choices: [present, absent]
        default: present
  exact: {description: "In each section that is named, delete the keys that are not.", type: bool, default: false, version_added: 7.1.2}
  prune: {description: "Delete a section, too, when its last entry is.", type: bool, default: false, version_added: 7.1.2}
  create: {description: "Make a file that is missing, with mode 0640.", type: bool, default: false, version_added: 7.1.2}
  unknown: {description: "Take names that the gateway does not know. They are masked like secrets.", type: bool, default: false, version_added: 7.1.2}
"""

EXAMPLES = r"""
- name: The listener
  ov.gateway.ov_conf:
    entries:
      - {section: SMTP, key: SmtpPort, value: 2525}
      - {section: SMTP, key: MaxMessageSize, value: 30M}
      - {section: Forward, key: ForwardMailAddress, state: absent}
    backup: true

- name: The account on the audit host, and nothing else in that section
  ov.gateway.ov_conf:
    entries:
      - {section: Cooperation, key: FTPUserPassword, value: "{{ vault_audit_password }}"}
    exact: true
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
errors:
  description: What keeps the change from being made, as C(ov_confctl) tells it in JSON.
  returned: when the change is refused
  type: list
  elements: dict
"""

from ansible_collections.ov.gateway.plugins.module_utils import gateway as ov


def work(module):
    entries, wanted = [], {}
    for number, option in enumerate(module.params['entries']):
        name = '[%s] %s' % (option['section'], option['key'])
        value = module.values.get(number)
        if option['state'] == 'absent' and value is not None:
            raise ov.Failure('%s: a value for an entry that is to be absent' % name)
        entry = dict(section=ov.text_of(option['section']), key=ov.text_of(option['key']), value=None)
        if value is not None:
            entry['value'] = wanted[name.lower()] = ov.value_of(name, value)
        if option['secret'] is not None:
            entry['secret'] = True
        entries.append(entry)
    (answer,) = module.apply(entries)
    if answer['errors']:
        raise ov.Failure('; '.join(map(ov.in_words, answer['errors'])), errors=answer['errors'])
    result = dict(
        changed=bool(answer['changed']),
        changed_entries=[dict(section=ov.shown(change['section']), key=ov.shown(change['key']))
                         for change in answer['changed']],
        diff=ov.difference(answer, wanted))
    if answer['backup']:
        result['backup_file'] = ov.shown(answer['backup'])
    return result


def main():
    ov.Module(dict(
        ov.LOCK_OPTIONS,
        entries=dict(
            type='list', elements='dict', required=True, no_log=False,
            mutually_exclusive=[['value', 'secret']],
            required_if=[['state', 'present', ['value', 'secret'], True]],
            options=dict(
                section=dict(type='str', required=True),
                key=dict(type='str', required=True, no_log=False),
                value=dict(type='raw'),
                secret=dict(type='raw', no_log=True),
                state=dict(type='str', choices=['present', 'absent'], default='present'),
            )),
        prune=dict(type='bool', default=False),
        create=dict(type='bool', default=False),
        unknown=dict(type='bool', default=False),
    )).finish(work)


if __name__ == '__main__':
    main()
