#!/usr/bin/python
"""The rights of one user of an administration role, all of them or none."""

DOCUMENTATION = r"""
module: ov_rights
short_description: Change the rights of the gateway's administrators
description:
  - Changes the rights file of a user in the directory of the role, or removes it.
  - The new text is made in a private directory, where the role command changes and loads it, and
    then written into the file in one piece, under the lock, while a private copy of the old one is
    beside it. The file keeps its owner, mode and links. When it does not load there, or somebody
    changed it without the lock, the text that was there before is put back.
  - After a kill or a crash that copy stays as C(.USER.conf.before.XXXXXXXX). The next run warns of it.
  - A file that has to be made belongs to the owner of the role directory and has mode 0644.
extends_documentation_fragment: ov.gateway.gateway
options:
  user:
    description: The user.
    type: str
    required: true
  role:
    description: The role of the user. The last three are those of the search side.
    type: str
    required: true
    choices: [admin, manager, sysadm, search_admin, search_manager, search_sysadm]
  rights:
    description:
      - The rights by their names. See ov_admconf(8) for those that can be changed, and to what.
      - A right with an empty value goes back to the default of the role. Its entries are deleted,
        which can be done with every right, also with one whose value stops the commands.
      - Rights that are not named here stay as they are.
      - Put values in quotes. YAML reads C(12:30), C(0640) and C(0x1F) as the numbers 750, 416 and
        31. Its C(true) and C(false) are written C(yes) and C(no).
    type: dict
    default: {}
  state:
    description: With C(absent) the rights file is removed, and the defaults of the role hold.
    type: str
    choices: [present, absent]
    default: present
notes:
  - What differs takes the super-user, in check mode, too.
  - The role commands check values lightly. What does not load is refused.
author: The ov_conf maintainers (@ov)
"""

EXAMPLES = r"""
- name: What Taro may do
  ov.gateway.ov_rights:
    user: taro
    role: manager
    rights:
      RealName: Taro Yamada
      HoldMessage: false
      Group: sales:support
      ViewStatistics: ""

- name: Jiro has left
  ov.gateway.ov_rights: {user: jiro, role: search_admin, state: absent}
"""

RETURN = r"""
file:
  description: The rights file.
  returned: success
  type: str
rights:
  description:
    - The rights that hold afterwards, or would hold, as the role command lists them.
  returned: success
  type: dict
  sample: {HoldList: "1", RealName: "Taro Yamada"}
"""

import os
import re
import shutil
import tempfile

from ansible_collections.ov.gateway.plugins.module_utils import gateway as ov
from ansible_collections.ov.gateway.plugins.module_utils.gateway import Failure

# The command of a role, the key of its directory, and the section of its rights files.
ROLES = {
    'admin': ('ov_admconf', 'Admin_Dir', 'Admin'),
    'manager': ('ov_mgrconf', 'Manager_Dir', 'Manager'),
    'sysadm': ('ov_sysadmconf', 'Sysadm_Dir', 'Admin'),
    'search_admin': ('srch_admconf', 'SRCH_Admin_Dir', 'Admin'),
    'search_manager': ('srch_mgrconf', 'SRCH_Manager_Dir', 'Manager'),
    'search_sysadm': ('srch_sysadmconf', 'SRCH_Sysadm_Dir', 'Admin'),
}
USER = re.compile('[A-Za-z0-9_](?:[A-Za-z0-9_.-]*[A-Za-z0-9_])?')
NEW_FILE_MODE = 0o644


class Role:
    """A role at a gateway."""

    def __init__(self, gateway, name):
        self.gateway = gateway
        self.command, self.directory_key, self.section = ROLES[name]

    def directory(self):
        """Where the loaded configuration has the rights files."""
        directory = self.setting(self.directory_key)
        if not directory.startswith('/'):
            directory = os.path.join(self.setting('RootDirectory'), directory)
        if not os.path.isdir(directory):
            raise Failure('there is no directory %s for the rights of the role' % directory)
        return directory

    def setting(self, key):
        value = self.gateway.fetch(self.gateway.path, 'Directories', key)
        if value is None:
            value = self.gateway.keys[ov.folded('Directories', key)]['default']
        return value

    def listing(self, conf, user):
        """What the command lists with a main file: of the user, or the defaults of the role."""
        options = ['-u', user] if user else []
        return self.gateway.asked(self.command, '-f', conf, *options)


def listed(listing):
    """The rights in a listing, by name."""
    lines = ov.printable(listing.partition('--\n')[2]).splitlines()
    return dict(line.split(': ', 1) for line in lines if ': ' in line)


class Rehearsal:
    """A private directory, in which the commands work on the rights as they do in the real one."""

    def __init__(self, role, user, text, path):
        self.role, self.user = role, user
        self.gateway = role.gateway
        self.top = tempfile.mkdtemp(dir=self.gateway.module.tmpdir)
        os.mkdir(os.path.join(self.top, 'role'), 0o700)
        self.file = os.path.join(self.top, 'role', user + '.conf')
        self.conf = os.path.join(self.top, 'conf')
        # The first entry of a section and key counts. Those in front of the first section do not.
        self.write(self.conf, '[Directories]\n%s = %s/role\n[-]\n%s' % (
            role.directory_key, self.top, self.gateway.read()[0]))
        if text is not None:
            self.write(self.file, text)
        # The role commands put a slash behind a directory that ends in one.
        self.gateway.aliases.update({
            self.conf: self.gateway.path, self.file: path,
            os.path.join(self.top, 'role//') + user + '.conf': path})

    def __enter__(self):
        return self

    def __exit__(self, *_failure):
        shutil.rmtree(self.top)

    @staticmethod
    def write(path, text):
        with open(os.open(path, os.O_WRONLY | os.O_CREAT | os.O_TRUNC | os.O_CLOEXEC, 0o600),
                  'wb') as file:
            file.write(text.encode('utf-8', 'surrogateescape'))

    def read(self):
        return ov.found_at(self.file, follow=False)[0]

    def delete(self, rights):
        """Deletes lines: no command would load a right that has to go since it does not load."""
        names = {ov.folded(self.role.section, right) for right in rights}
        text = self.read()
        gone = {line for line, section, key, _rest in ov.entries_of(text)
                if ov.folded(section, key) in names}
        self.write(self.file, '\n'.join(line for number, line in enumerate(text.split('\n'), 1)
                                        if number not in gone))

    def assign(self, rights):
        arguments = ['%s=%s' % (right, ov.as_written(value)) for right, value in rights.items()]
        status, _reply, message = self.gateway.run(self.role.command, '-f', self.conf,
                                                   '-u', self.user, '-m', '--', *arguments)
        if status != 0:
            if message in rights:
                message += ' cannot be changed, or not to that: see ov_admconf(8)'
            raise Failure('refused by %s: %s' % (self.role.command, message))


def wanted(module, gateway, section):
    rights = {}
    for name, value in module.params['rights'].items():
        what = 'right %r' % name
        ov.refuse_control(what, name)
        row = gateway.keys.get(ov.folded(section, name))
        if row is None:
            raise Failure('%s: there is no such right' % what)
        if row['key'] in rights:
            raise Failure('%s is given twice' % what)
        rights[row['key']] = ov.value_text(what, '' if value is None else value)
    return rights


def replace(role, user, path, before, after, expected):
    """Changes the real file, which has to load as in the rehearsal."""
    with ov.all_or_nothing(path, before, after, follow=False):
        if after is None:
            os.unlink(path)
        elif before is None:
            ov.new_file(path, os.stat(os.path.dirname(path)), NEW_FILE_MODE, after)
        else:
            ov.rewrite(path, after, follow=False)
        if role.listing(role.gateway.path, user) != expected:
            raise Failure('%s does not tell what was written' % role.command)


def rehearsed(rehearsal, rights, before):
    """The text and the listing after the changes, made and loaded in private."""
    role = rehearsal.role
    deleted = [right for right, value in rights.items() if value == '']
    assigned = {right: value for right, value in rights.items() if value != ''}
    if deleted:
        rehearsal.delete(deleted)
    if assigned:
        rehearsal.assign(assigned)
    listing = role.listing(rehearsal.conf, rehearsal.user)
    after = rehearsal.read()
    for right, value in rights.items():
        if (ov.written(after, role.section, right) or '') != value:
            raise Failure('right %s: the value would not read back as it is given' % right)
    ov.refuse_other_changes(before or '', after,
                            {ov.folded(role.section, right) for right in rights})
    return after, listing


def work(module):
    user = module.params['user']
    if not USER.fullmatch(user):
        raise Failure('a user has letters, digits, "_", and between them "-" and "."')
    gateway = ov.Gateway(module)
    role = Role(gateway, module.params['role'])
    rights = wanted(module, gateway, role.section)
    remove = module.params['state'] == 'absent'
    if remove and rights:
        raise Failure('rights for a user who is to be absent')
    with gateway.locked(exclusive=not module.check_mode):
        path = os.path.join(role.directory(), user + '.conf')
        ov.warn_of_copies(module, path)
        before, _status = ov.found_at(path, follow=False)
        after, differing = (None if remove else before), {}
        for right, value in rights.items():
            now = ov.written(before or '', role.section, right)
            if now != value and (now is not None or value != ''):
                differing[right] = value
        if remove and before is not None or differing:
            ov.refuse_others()
        with ov.HeldSignals() as signals:
            if differing:
                with Rehearsal(role, user, before, path) as rehearsal:
                    after, listing = rehearsed(rehearsal, differing, before)
            else:
                listing = role.listing(gateway.path, None if remove else user)
            signals.refuse()
            if not module.check_mode and after != before:
                replace(role, None if remove else user, path, before, after, listing)
    return dict(changed=after != before, file=path, rights=listed(listing),
                diff=dict(before=ov.printable(before or ''), after=ov.printable(after or ''),
                          before_header=path, after_header=path))


def main():
    ov.run_module(ov.Module(
        argument_spec=dict(
            ov.COMMON_OPTIONS,
            user=dict(type='str', required=True),
            role=dict(type='str', required=True, choices=list(ROLES)),
            rights=dict(type='dict', default={}),
            state=dict(type='str', choices=['present', 'absent'], default='present'),
        ),
        supports_check_mode=True,
    ), work)


if __name__ == '__main__':
    main()
