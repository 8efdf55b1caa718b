#!/usr/bin/python
DOCUMENTATION = r"""
module: ov_rights_info
short_description: Read the rights of the gateway's administrators
version_added: 7.1.2
description:
  - Returns what C(ov_confctl show --rights) says of each user of a role who has a rights file.
extends_documentation_fragment: [ov.gateway.gateway, ov.gateway.gateway.info, ov.gateway.gateway.role]
"""

EXAMPLES = r"""
- name: Who may see held messages
  ov.gateway.ov_rights_info: {role: manager}
  register: managers

- name: Tell
  ansible.builtin.debug:
    msg: "{{ managers.users | dict2items | selectattr('value.rights.HoldMessage.typed') | map(attribute='key') }}"
"""

RETURN = r"""
users:
  description:
    - Of each user the file and the rights by name, with value, default, changed, origin, kind and
      typed, as ov_confctl(8) describes them.
  returned: success
  type: dict
"""

from ansible_collections.ov.gateway.plugins.module_utils import gateway as ov


def work(module):
    answers, message = module.ask('show', '--rights=' + module.params['role'])
    if message:
        module.warn(message)
    return dict(changed=False, users={
        answer['user']: dict(file=ov.shown(answer['file']), rights={right['key']: right for right in answer['rights']})
        for answer in answers})


def main():
    ov.Module(dict(ov.COMMON_OPTIONS, role=ov.ROLE)).finish(work)


if __name__ == '__main__':
    main()
