#!/usr/bin/python
"""What a gateway's configuration says."""

DOCUMENTATION = r"""
module: ov_conf_info
short_description: Read the gateway's configuration
description:
  - Tells the version of the commands, the values of entries as they are written and as the gateway
    holds them, and what the file holds for nothing, such as misspelt keys.
extends_documentation_fragment: ov.gateway.gateway
options:
  entries:
    description:
      - The entries to tell of. The file has to load for that.
    type: list
    elements: dict
    default: []
    suboptions:
      section:
        description: The section, in any case.
        type: str
        required: true
      key:
        description: The key, in any case.
        type: str
        required: true
notes:
  - Secrets (C(FTPUserPassword), C(TSAProxy_pass)) are not told.
author: The ov_conf maintainers (@ov)
"""

EXAMPLES = r"""
- name: How large messages may be, and typing errors
  ov.gateway.ov_conf_info:
    entries: [{section: SMTP, key: MaxMessageSize}]
  register: gateway

- name: No typing errors
  ansible.builtin.assert:
    that: gateway.unknown | length == 0
"""

RETURN = r"""
version:
  description: The version of the commands.
  returned: success
  type: str
entries:
  description: The entries that were asked for, in that order.
  returned: success
  type: list
  elements: dict
  contains:
    section:
      description: As it was given.
      type: str
    key:
      description: As it was given.
      type: str
    present:
      description: Whether the entry stands in the file.
      type: bool
    written:
      description: The text of the entry as C(ov_conf -l) shows it; none when it is not there, or
        a secret.
      type: str
    loaded:
      description: The value that holds, as C(ov_conf -a) shows it; none when the key cannot be shown,
        or is a secret.
      type: str
unknown:
  description:
    - The headers and entries that nobody reads, since their names are in no list of keys or they
      stand in front of the first section. A byte order mark, which hides a header in the first
      line, is told as a warning.
  returned: success
  type: list
  elements: dict
  contains:
    line:
      description: The number of the line.
      type: int
    section:
      description: The section; none for an entry in front of the first one.
      type: str
    key:
      description: The key; none for the header of an unknown section.
      type: str
"""

from ansible_collections.ov.gateway.plugins.module_utils import gateway as ov


def told(gateway, section, key):
    where = ['ov_conf', '-f', gateway.path, '-s', section, '-k', key]
    present = gateway.fetch(gateway.path, section, key) is not None
    row = gateway.keys.get(ov.folded(section, key))
    texts = dict(written=None, loaded=None)
    if not ov.is_secret(key):
        for what, wanted, option in (('written', present, '-l'),
                                     ('loaded', row and row['shown'] != '-', '-a')):
            if wanted:
                reply = gateway.asked(*where, option)
                texts[what] = ov.printable(reply[len('0: '):].rstrip('\n'))
    return dict(section=section, key=key, present=present, **texts)


def unknown(gateway, text):
    sections = {section for section, _key in gateway.keys}
    for line, section, key, _rest in ov.scan(text):
        if section is None:
            nobody_reads = True
        elif key is None:
            nobody_reads = ov.folded(section)[0] not in sections
        else:
            nobody_reads = (ov.folded(section)[0] in sections
                            and ov.folded(section, key) not in gateway.keys)
        if nobody_reads:
            yield dict(line=line, section=section and ov.printable(section),
                       key=key and ov.printable(key))


def work(module):
    for entry in module.params['entries']:
        for what in ('section', 'key'):
            ov.refuse_control('%s %r' % (what, entry[what]), entry[what])
    gateway = ov.Gateway(module)
    with gateway.locked(exclusive=False):
        text = gateway.read()[0]
        if text.startswith('\ufeff'):
            module.warn('%s begins with a byte order mark, which hides a header in its first line'
                        % gateway.path)
        return dict(
            changed=False,
            version=gateway.asked('ov_conf', '-v').split('VERSION: ')[-1].split('\n')[0],
            entries=[told(gateway, **entry) for entry in module.params['entries']],
            unknown=list(unknown(gateway, text)),
        )


def main():
    ov.run_module(ov.Module(
        argument_spec=dict(
            ov.COMMON_OPTIONS,
            entries=dict(type='list', elements='dict', default=[], no_log=False, options=dict(
                section=dict(type='str', required=True),
                key=dict(type='str', required=True, no_log=False),
            )),
        ),
        supports_check_mode=True,
    ), work)


if __name__ == '__main__':
    main()
