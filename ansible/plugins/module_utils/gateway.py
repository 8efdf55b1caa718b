"""What the modules share: their call of ov_confctl, and what they tell of its answers."""

import base64
import json
import os
import re
import subprocess

from ansible.module_utils.basic import AnsibleModule
from ansible.module_utils.common.validation import check_type_dict, check_type_list

COMMON_OPTIONS = dict(
    path=dict(type='path', default='/etc/Tessary.conf'),
    command_path=dict(type='path'),
)
ROLE = dict(type='str', required=True,
            choices=['admin', 'manager', 'sysadm', 'search_admin', 'search_manager', 'search_sysadm'])
LOCK_OPTIONS = dict(
    COMMON_OPTIONS,
    lock=dict(type='path'),
    lock_timeout=dict(type='int', default=30),
    backup=dict(type='bool', default=False),
    exact=dict(type='bool', default=False),
)

HIDDEN = '(not shown)'
PATIENCE = 60  # seconds for the work, beside those for locks
OLDER = ('unknown command', 'unrecognized option', 'does not take', 'unknown field')


class Failure(Exception):
    """A refusal. Its text is for the user, and the rest for the reply."""

    def __init__(self, message, **reply):
        super().__init__(message)
        self.reply = reply


def text_of(name):
    """A text as ov_confctl takes it, whatever its bytes are."""
    try:
        return {'base64': base64.b64encode(name.encode('utf-8', 'surrogateescape')).decode('ascii')}
    except UnicodeEncodeError:
        raise Failure('there is half a character in a name or a value') from None


def shown(text):
    """A text of an answer, for reports."""
    if isinstance(text, dict):
        return base64.b64decode(text['base64']).decode('utf-8', 'replace')
    return text or ''


def value_of(what, value):
    """A value as ov_confctl takes it: what YAML made a boolean or a number of is a text again."""
    if isinstance(value, bool):
        return 'yes' if value else 'no'
    if isinstance(value, int):
        return str(value)
    if isinstance(value, list):
        return [value_of(what, item) for item in value]
    if not isinstance(value, str):
        raise Failure('%s: the value is neither a text, a list nor a whole number: put it in quotes' % what)
    return text_of(value)


def in_words(finding):
    """An error or a warning as ov_confctl tells it to people."""
    name = '[%s] %s' % (shown(finding['section']), shown(finding['key'])) if finding['section'] else ''
    value = (' = ' if finding['key'] else '') + shown(finding['value']) if finding['value'] else ''
    line = ':%d' % finding['line'] if finding['line'] else ''
    file = re.sub('^standard input(: )?', '', shown(finding['file']))
    parts = [file + line, name + value, shown(finding['message'])]
    return ': '.join(part for part in parts if part)


def difference(answer, wanted=None):
    """What changes, for --diff. Of a secret only `wanted`, by section and key, tells whether it stays."""
    sides = dict(before='', after='')
    for change in answer['changed']:
        name = '[%s] %s' % (shown(change['section']), shown(change['key']))
        if change.get('masked'):
            stays = (wanted or {}).get(name.lower())
            change = dict(change, before='(secret)', after='(secret, new)' if stays else None)
        for side in sides:
            if change[side] is not None:
                sides[side] += (name + ' = ' + shown(change[side]) if change['key'] else name) + '\n'
    return dict(sides, before_header=shown(answer['file']), after_header=shown(answer['file']))


class Module(AnsibleModule):
    """A module that keeps the values of entries out of all that is reported, whatever fails.

    Which of them are secrets only ov_confctl knows, which masks them in its answers.
    """

    def __init__(self, options, **more):
        self.values = {}  # of the entries, by their numbers
        super().__init__(argument_spec=options, supports_check_mode=True, **more)

    def _load_params(self):
        super()._load_params()
        for name, given in self.params.items():
            if name not in self.argument_spec and not name.startswith('_ansible_'):
                self.params[name] = HIDDEN
            elif name == 'entries' and given is not None:
                self.params[name] = self.without_values(given)

    def without_values(self, given):
        """Entries as they were given, without what is no name."""
        try:
            entries = [dict(check_type_dict(entry)) for entry in check_type_list(given)]
        except (TypeError, ValueError):
            return HIDDEN  # which is refused, too
        for number, entry in enumerate(entries):
            for name, value in entry.items():
                if name in ('value', 'secret') and value is not None:
                    self.values[number] = value
                    # The empty text is in every reply, and a truth value in most of them.
                    if name == 'secret' and isinstance(value, str) and value:
                        self.no_log_values.add(value)
                    entry[name] = HIDDEN
                elif name not in self.argument_spec['entries'].get('options', ()):
                    entry[name] = HIDDEN
        return entries

    def run(self, *arguments, request=None):
        """The status of ov_confctl, what it answers, and what it says on standard error."""
        directory, seconds = self.params['command_path'], PATIENCE + self.params.get('lock_timeout', 30)
        program = (os.path.join(directory, 'ov_confctl') if directory else
                   self.get_bin_path('ov_confctl', opt_dirs=['/usr/local/sbin', '/usr/sbin']))
        if not program or not os.access(program, os.X_OK):
            raise Failure('there is no ov_confctl in %s: install a package that has it, or set command_path'
                          % (directory or 'the PATH'))
        try:
            done = subprocess.run([program] + list(arguments), input=json.dumps(request).encode('ascii'),
                                  stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=seconds, check=False)
        except OSError as error:
            raise Failure('cannot run %s: %s: install the package for this machine'
                          % (program, error.strerror)) from None
        except subprocess.TimeoutExpired:
            raise Failure('%s had not ended after %d seconds and was killed: see what holds it up on the gateway'
                          % (program, seconds)) from None
        message = done.stderr.decode('utf-8', 'replace').strip()
        message = re.sub('(^|\n)(ov_confctl: )?(standard input: )?', r'\1', message).replace('\n', '; ')
        if done.returncode == 2 and any(sign in message for sign in OLDER):
            raise Failure('%s is older than this collection: install a newer package (%s)' % (program, message))
        return done.returncode, done.stdout.decode('utf-8', 'replace'), message

    def ask(self, *arguments, request=None):
        """The answers of ov_confctl about the file, and what it says on standard error."""
        status, reply, message = self.run('-f', self.params['path'], '--json', *arguments, request=request)
        try:
            answers = [json.loads(line) for line in reply.splitlines()]
        except ValueError:
            raise Failure('ov_confctl gives no answer in JSON: it is another program, or an older one') from None
        if not answers and status:
            raise Failure(message or 'ov_confctl ended with the status %d' % status)
        return answers, message

    def apply(self, entries, *options):
        """Lets ov_confctl make changes, or tell what it would do, and passes its warnings on."""
        flags = ['--' + name for name in ('backup', 'exact', 'create', 'unknown', 'prune', 'purge')
                 if self.params.get(name)]
        if self.check_mode:
            flags.append('--dry-run')
        if self.params['lock']:
            flags.append('--lock=' + self.params['lock'])
        answers, _message = self.ask('apply', '-', '--wait=%d' % self.params['lock_timeout'], *options, *flags,
                                     request=entries)
        for warning in [warning for answer in answers for warning in answer['warnings']]:
            self.warn(in_words(warning))
        return answers

    def finish(self, work):
        """Ends the module with what `work` gives, or with why it failed."""
        try:
            result = work(self)
        except Failure as failure:
            self.fail_json(msg=str(failure), **failure.reply)
        self.exit_json(**result)
