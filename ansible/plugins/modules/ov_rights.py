#!/usr/bin/python
DOCUMENTATION = r"""
module: ov_rights
short_description: Change the rights of the gateway's administrators
version_added: 1.0.0
description:
  - Hands the rights of any number of users to one C(ov_confctl apply), which changes their rights
    files, makes or removes them. The changes of each user are made, or none of his.
  - A file that has to be made belongs to the owner of the role directory and has mode 0644.
  - A right that does not exist, or a name that no user may have, stops the task before any change.
extends_documentation_fragment: [ov.gateway.gateway, ov.gateway.gateway.lock, ov.gateway.gateway.role]
options:
  users:
    description:
      - The users by their names, each with rights by their names, or nothing.
      - A right with an empty value goes back to the default of the role. Those that are not named
        stay as they are, unless I(exact) is set. A user without rights gets a file without rights.
      - Put values in quotes. YAML reads C(12:30), C(0640) and C(0x1F) as the numbers 750, 416 and
        31. Its C(true) and C(false) are written C(yes) and C(no).
    type: dict
    version_added: 7.1.2
  user:
    description: A single user, in the place of I(users).
    type: str
  rights:
    description: The rights of I(user).
    type: dict
    default: {}
  exact: {description: "The rights of a user that are not named go back to the defaults.", type: bool, default: false, version_added: 7.1.2}
  purge: {description: "Remove all users of the role who are not named.", type: bool, default: false, version_added: 7.1.2}
  state:
    description: With C(absent) the files of the users are removed, and the defaults of the role hold.
    type: str
    choices: [present, absent]
    default: present
"""

EXAMPLES = r"""
- name: The managers, and no others
  ov.gateway.ov_rights:
    role: manager
    users:
      taro: {RealName: Taro Yamada, HoldMessage: false, Group: "sales:support", ViewStatistics: ""}
      hanako:
    purge: true

- name: Jiro has left
  ov.gateway.ov_rights: {user: jiro, role: search_admin, state: absent}
"""

RETURN = r"""
changed_users:
  description: The users whose rights were, or would be, changed.
  returned: always, once the users have been looked at
  type: list
  elements: str
files:
  description: The rights file of each user.
  returned: as changed_users
  type: dict
  sample: {taro: /opt/Orvanta/KORE/manager/taro.conf}
errors:
  description: What keeps the changes of users from being made, by user, as C(ov_confctl) tells it in JSON.
  returned: when the changes of a user are refused
  type: dict
"""

from ansible_collections.ov.gateway.plugins.module_utils import gateway as ov


def entries_of(user, rights, is_absent):
    if is_absent:
        if rights:
            raise ov.Failure('rights for a user who is to be absent: %s' % user)
        return [dict(user=user, key=None, value=None)]
    if not isinstance(rights, (dict, type(None))):
        raise ov.Failure('the rights of %s are no mapping' % user)
    return [dict(user=user)] + [
        dict(user=user, key=ov.text_of(name),
             value=None if value in (None, '') else ov.value_of('right %s' % name, value))
        for name, value in (rights or {}).items()]


def work(module):
    params = module.params
    users = {params['user']: params['rights']} if params['user'] is not None else params['users']
    entries = [entry for user, rights in users.items()
               for entry in entries_of(user, rights, params['state'] == 'absent')]
    answers = module.apply(entries, '--rights=' + params['role'])
    if answers and 'user' not in answers[0]:  # nothing has been done for anybody
        raise ov.Failure('; '.join(map(ov.in_words, answers[0]['errors'])), errors=dict(role=answers[0]['errors']))
    changed = [answer['user'] for answer in answers if answer['changed'] and not answer['errors']]
    result = dict(
        changed=bool(changed), changed_users=changed,
        files={answer['user']: ov.shown(answer['file']) for answer in answers})
    errors = {answer['user']: answer['errors'] for answer in answers if answer['errors']}
    if errors:
        raise ov.Failure('; '.join(map(ov.in_words, sum(errors.values(), []))), errors=errors, **result)
    return dict(result, diff=[ov.difference(answer) for answer in answers if answer['changed']])


def main():
    ov.Module(dict(
        ov.LOCK_OPTIONS,
        role=ov.ROLE,
        users=dict(type='dict'),
        user=dict(type='str'),
        rights=dict(type='dict', default={}),
        purge=dict(type='bool', default=False),
        state=dict(type='str', choices=['present', 'absent'], default='present'),
    ), mutually_exclusive=[['user', 'users']], required_one_of=[['user', 'users']]).finish(work)


if __name__ == '__main__':
    main()
