"""What the modules share: the commands, the lock, the list of keys, the grammar of the file."""

import contextlib
import fcntl
import glob
import os
import re
import signal
import stat
import tempfile
import time

from ansible.module_utils.basic import AnsibleModule
from ansible.module_utils.common.validation import check_type_dict, check_type_list

COMMON_OPTIONS = dict(
    path=dict(type='path', default='/etc/Tessary.conf'),
    command_path=dict(type='path'),
    keys=dict(type='path', no_log=False),
    lock=dict(type='path'),
    lock_timeout=dict(type='int', default=30),
)

LONGEST_VALUE = 1000
SECRET_KEYS = ('tsaproxypass', 'ftpuserpassword')  # of their names, the letters
HIDDEN = '(not shown)'
CONTROL = re.compile('[\x00-\x1f\x7f]')
# What YAML and JSON can name, but UTF-8 cannot write. The others stand for bytes that are no UTF-8.
HALVES = re.compile('[\ud800-\udc7f\udd00-\udfff]')
# What a tool that has just stopped may still hold, in seconds.
PATIENCE = 2


class Failure(Exception):
    """A refusal, or a step that did not work. Its text is for the user."""


# Texts

def decoded(data):
    """Bytes as a text that becomes the same bytes again."""
    return data.decode('utf-8', 'surrogateescape')


def printable(text):
    """A text that any report can hold."""
    return text.encode('utf-8', 'surrogateescape').decode('utf-8', 'replace')


def shown(section, key):
    return '[%s] %s' % (section, key)


def folded(*names):
    """Names as they are compared: without regard to the case of ASCII letters."""
    return tuple(re.sub('[A-Z]+', lambda found: found.group().lower(), name) for name in names)


def refuse_control(what, text):
    if CONTROL.search(text):
        raise Failure('%s: there is a control character, such as a line feed, in it' % what)
    if HALVES.search(text):
        raise Failure('%s: there is half a character in it' % what)


def value_text(what, value):
    """The value of an option as it reads back: what YAML made a boolean or a number of, too."""
    if isinstance(value, bool):
        value = 'yes' if value else 'no'
    elif isinstance(value, int):
        value = str(value)
    if isinstance(value, list):
        raise Failure('%s: the value is a list: write it as one text, with what the key has '
                      'between the parts, as in "a:b"' % what)
    if not isinstance(value, str):
        raise Failure('%s: the value is neither a text nor a whole number: put it in quotes' % what)
    refuse_control('the value of ' + what, value)
    if len(as_written(value).encode('utf-8', 'surrogateescape')) > LONGEST_VALUE:
        raise Failure('%s: the value is longer than %d characters' % (what, LONGEST_VALUE))
    return value


def as_written(value):
    """What stands behind the "=" for a value: one that begins or ends oddly is put in quotes."""
    return value if as_read(value) == value else '"%s"' % value


def as_read(rest):
    """What a fetch gives for the text behind the "=" of an entry."""
    value = rest.split('\0')[0].strip(' \t')
    return value[1:-1] if len(value) > 2 and value[0] == value[-1] == '"' else value


# The grammar

TOKEN = re.compile(r'[ \t]*(?:(?P<end>#.*|$)|(?P<mark>[=\[\]])|"(?P<quoted>[^"]*)"?'
                   r'|(?P<word>[^=\[\]# \t]+))', re.DOTALL)
BARE_KEY = re.compile(r'[^=\[\]# \t"][^=\[\]# \t]*')
NUMBER = re.compile(r'[0-9]{1,8}')


def token(line, at):
    """The token at a position: its kind, its text, and where it ends."""
    found = TOKEN.match(line, at)
    kind = found.lastgroup
    if kind == 'word' and NUMBER.fullmatch(found.group(kind)):
        kind = 'number'
    if kind in ('quoted', 'word'):
        return 'name', found.group(kind).split('\0')[0], found.end()
    return found.group('mark') or kind, '', found.end()


def scan(text):
    """The headers and entries of a file: line, section, key (None: a header) and the rest.

    Entries in front of the first section have none.
    """
    section = None
    for number, line in enumerate(text.split('\n'), 1):
        kind, name, at = token(line, 0)
        while kind == '[':
            kind, name, at = token(line, at)
            if kind != 'name':
                break
            yield number, name, None, ''
            header = name
            kind, name, at = token(line, at)
            closed = kind == ']'
            # A header that is not closed renames a section, but begins none.
            section = header if closed or section is not None else None
            kind, name, at = token(line, at) if closed else ('end', '', at)
        if kind == 'name':
            kind, _text, at = token(line, at)
            if kind == '=':
                yield number, section, name, line[at:]


def entries_of(text):
    return [found for found in scan(text) if None not in found[1:3]]


def written(text, section, key):
    """The value of the first entry of that name, or None."""
    for _line, its_section, its_key, rest in entries_of(text):
        if folded(its_section, its_key) == folded(section, key):
            return as_read(rest)
    return None


def refuse_other_changes(before, after, names):
    """Raises when more than the entries `names` (folded), and headers for them, has changed."""
    def others(text):
        return [(folded(section, key), rest) for _line, section, key, rest in entries_of(text)
                if folded(section, key) not in names]

    def other_lines(text):
        own = {line for line, section, key, _rest in entries_of(text)
               if folded(section, key) in names}
        return [line for number, line in enumerate(text.split('\n'), 1) if number not in own]

    headers = {'[%s]' % section for section, _key in names}
    lines, new_lines = other_lines(before), other_lines(after)
    if lines and lines[-1] == '':
        del lines[-1]  # behind the last line feed
    added = [line for line in new_lines[len(lines):] if line]
    if others(before) != others(after) or new_lines[:len(lines)] != lines or any(
            folded(line)[0] not in headers for line in added):
        raise Failure('other lines would change, too: the file begins with an empty line, does not '
                      'end with a line feed, has a line that is too long, or has an entry on the '
                      'line of a header; mend it by hand')


# Files

def read_file(path, follow=True):
    """The text of a regular file, and its status. A missing file raises FileNotFoundError."""
    flags = os.O_RDONLY | os.O_CLOEXEC | os.O_NONBLOCK | (0 if follow else os.O_NOFOLLOW)
    descriptor = os.open(path, flags)
    try:
        status = os.fstat(descriptor)
        if not stat.S_ISREG(status.st_mode):
            raise Failure('%s is no regular file' % path)
        with os.fdopen(descriptor, 'rb', closefd=False) as file:
            return decoded(file.read()), status
    finally:
        os.close(descriptor)


def write_all(path, descriptor, text):
    data = text.encode('utf-8', 'surrogateescape')
    try:
        while data:
            data = data[os.write(descriptor, data):]
        os.fsync(descriptor)
    except OSError as error:
        raise Failure('cannot write %s: %s' % (path, error.strerror)) from None


def path_of_private(path, kind):
    """How the names of the private files beside `path` begin."""
    return os.path.join(os.path.dirname(path), '.%s.%s.' % (os.path.basename(path), kind))


def private_file(path, kind, text):
    """Writes a new file beside `path` that only its owner may read, and returns its name."""
    directory, prefix = os.path.split(path_of_private(path, kind))
    descriptor, name = tempfile.mkstemp(prefix=prefix, dir=directory)
    try:
        write_all(name, descriptor, text)
    except BaseException:
        os.unlink(name)
        raise
    finally:
        os.close(descriptor)
    return name


def warn_of_copies(module, path):
    """Under the lock: tells of the copies that changes left which nobody finished or undid."""
    for name in glob.glob(glob.escape(path_of_private(path, 'before')) + '*'):
        module.warn('%s holds what was in %s before a change that was stopped: look at both, then '
                    'remove it' % (name, path))


def new_file(path, owner, mode, text):
    """Makes a file that is not there, with the owner and the group of the status `owner`."""
    descriptor = os.open(path, os.O_WRONLY | os.O_CREAT | os.O_EXCL | os.O_CLOEXEC, 0o600)
    try:
        os.fchown(descriptor, owner.st_uid, owner.st_gid)
        os.fchmod(descriptor, stat.S_IMODE(mode))
        write_all(path, descriptor, text)
    except BaseException:
        os.unlink(path)
        raise
    finally:
        os.close(descriptor)


def backup(path, text, status):
    """Keeps the text in a new file with the owner and the mode of `path`. Returns its name."""
    name = '%s.%d.%s~' % (path, os.getpid(), time.strftime('%Y-%m-%d@%H:%M:%S'))
    new_file(name, status, status.st_mode, text)
    return name


def found_at(path, follow):
    """As read_file; None and None when there is no file."""
    try:
        return read_file(path, follow)
    except FileNotFoundError:
        return None, None


def rewrite(path, text, follow=True):
    """Gives a file a text in place, as the commands do: its owner, mode and links stay."""
    flags = os.O_WRONLY | os.O_CLOEXEC | os.O_NONBLOCK | (0 if follow else os.O_NOFOLLOW)
    descriptor = os.open(path, flags)
    try:
        if not stat.S_ISREG(os.fstat(descriptor).st_mode):
            raise Failure('%s is no regular file' % path)
        end = time.monotonic() + PATIENCE
        while True:
            try:
                fcntl.lockf(descriptor, fcntl.LOCK_EX | fcntl.LOCK_NB)
                break
            except OSError:
                # Whoever may read the file may lock it. The text must not be lost to that.
                if time.monotonic() > end:
                    break
                time.sleep(0.05)
        os.ftruncate(descriptor, 0)
        write_all(path, descriptor, text)
    finally:
        os.close(descriptor)


@contextlib.contextmanager
def all_or_nothing(path, before, after, follow=True):
    """Around what changes a file: tells when the file ends otherwise, and undoes that.

    A text that is None stands for no file. While the file is written its text is in a copy, too.
    """
    def refuse_unless(text):
        there, status = found_at(path, follow)
        if there != text:
            raise Failure('somebody changed %s without the lock' % path)
        return status

    kept = None if before is None else private_file(path, 'before', before)
    try:
        status = refuse_unless(before)
        try:
            yield
            refuse_unless(after)
        except BaseException as failure:
            try:
                outcome = put_back(path, before, status, follow)
            except (Failure, OSError) as error:
                where = ', it is in %s' % kept if kept else ''
                kept = None
                raise Failure('%s; the text of before could not be put back (%s)%s'
                              % (failure, error, where)) from None
            raise Failure('%s; %s' % (failure, outcome)) from None
    finally:
        if kept:
            os.unlink(kept)


def put_back(path, before, status, follow):
    """Undoes a change that failed, and says how."""
    there, _status = found_at(path, follow)
    if there == before:
        return 'the file is as it was'
    if before is None:
        os.unlink(path)
        return 'the new file was removed'
    if there is None:
        new_file(path, status, status.st_mode, before)
    else:
        rewrite(path, before, follow)
    return 'the text of before was put back'


class HeldSignals:
    """Notes the signals that would end the process, so that a change is finished or undone."""

    def __enter__(self):
        self.came = None
        self.old = {number: signal.signal(number, self.note)
                    for number in (signal.SIGTERM, signal.SIGHUP, signal.SIGINT)}
        return self

    def note(self, number, _frame):
        self.came = number

    def refuse(self):
        if self.came:
            raise Failure('stopped by signal %d' % self.came)

    def __exit__(self, *_failure):
        for number, handler in self.old.items():
            signal.signal(number, handler)


# The module

def is_secret(key, section=''):
    """Whether the values of a key are passwords; also when its name is misspelt, or missing."""
    letters = re.sub('[^a-z]', '', ('%s %s' % (section, key)).lower())
    return key is None or any(name in letters for name in SECRET_KEYS)


class Module(AnsibleModule):
    """A module that masks the secrets among its options before anything refuses one of them.

    A refusal shows all options.
    """

    def _load_params(self):
        super()._load_params()
        for name, given in self.params.items():
            if name not in self.argument_spec and not name.startswith('_ansible_'):
                self.params[name] = HIDDEN
            elif name == 'entries' and given is not None:
                self.params[name] = self.masked(given)

    def masked(self, given):
        """Entries as they were given, without what cannot be used; the secrets are masked."""
        try:
            entries = [dict(check_type_dict(entry)) for entry in check_type_list(given)]
        except (TypeError, ValueError):
            return HIDDEN  # which is refused, too
        for entry in entries:
            for name, value in entry.items():
                if name not in self.argument_spec['entries']['options']:
                    entry[name] = HIDDEN
                elif name == 'secret' or name == 'value' and is_secret(entry.get('key'), entry.get('section')):
                    entry[name] = self.mask(value)
        return entries

    def mask(self, value):
        """Masks a secret in all that is told and logged. A list or a mapping is emptied."""
        if isinstance(value, (list, dict)):
            return type(value)()
        # The empty text is in every reply, and a truth value in most of them.
        if not isinstance(value, bool) and value not in (None, ''):
            text = str(value)
            # In replies, in the messages of the commands, and in the system log.
            self.no_log_values.update((text, printable(HALVES.sub('?', text)), repr(text)[1:-1]))
        return value


# The gateway

class Gateway:
    """The commands of one gateway and its configuration file."""

    def __init__(self, module):
        self.module = module
        self.path = os.path.abspath(module.params['path'])
        self.lock_descriptors = ()
        self.aliases = {}  # private files, by the file whose place they take
        directory = module.params['command_path']
        self.directories = [directory] if directory else None
        self.keys = self.read_keys()

    def command(self, name):
        if self.directories:
            path = os.path.join(self.directories[0], name)
            if not os.access(path, os.X_OK):
                raise Failure('there is no command %s' % path)
            return path
        return self.module.get_bin_path(name, required=True,
                                        opt_dirs=['/usr/local/sbin', '/usr/sbin'])

    def read_keys(self):
        """The rows of the list of keys, by the folded names."""
        path = self.module.params['keys'] or os.path.join(
            os.path.dirname(os.path.realpath(self.command('ov_conf'))),
            '../share/ov-conf/keys')
        try:
            with open(path, encoding='utf-8') as file:
                rows = [line.rstrip('\n').split('\t') for line in file if not line.startswith('#')]
        except OSError as error:
            raise Failure('cannot read the list of keys (option "keys"): %s' % error) from error
        columns = ('section', 'key', 'kind', 'check', 'shown', 'default')
        if not rows or any(len(row) < len(columns) for row in rows):
            raise Failure('%s is no list of keys' % path)
        return {folded(row[0], row[1]): dict(zip(columns, row)) for row in rows}

    @contextlib.contextmanager
    def locked(self, exclusive):
        """Takes the lock. Who only reads shares it, and makes none: without one nobody writes.

        Only the super-user changes anything.
        """
        exclusive = exclusive and os.getuid() == 0
        self.read()  # a file that is not there gets no lock
        base = self.path[:-len('.conf')] if self.path.endswith('.conf') else self.path
        path = self.module.params['lock'] or base + '.lock'
        flags = os.O_RDWR | os.O_CREAT if exclusive else os.O_RDONLY
        try:
            descriptor = os.open(path, flags | os.O_CLOEXEC | os.O_NOFOLLOW | os.O_NONBLOCK, 0o600)
        except OSError as error:
            if exclusive or not isinstance(error, (FileNotFoundError, PermissionError)):
                raise Failure('cannot open the lock %s: %s' % (path, error.strerror)) from None
            if isinstance(error, PermissionError):
                self.module.warn('%s cannot be opened: the file is read without the lock' % path)
            yield
            return
        try:
            if os.fstat(descriptor).st_mode & 0o007:
                self.module.warn('anybody can lock %s, and so stop a change' % path)
            self.wait_for(descriptor, path, exclusive)
            # A command that outlives this process keeps the others out until it ends, too.
            self.lock_descriptors = (descriptor,)
            yield
        finally:
            os.close(descriptor)

    def wait_for(self, descriptor, path, exclusive):
        timeout = self.module.params['lock_timeout']
        end = time.monotonic() + timeout
        while True:
            try:
                fcntl.flock(descriptor,
                            (fcntl.LOCK_EX if exclusive else fcntl.LOCK_SH) | fcntl.LOCK_NB)
                return
            except BlockingIOError:
                if time.monotonic() >= end:
                    raise Failure('another program holds the lock %s: gave up after %d seconds'
                                  % (path, timeout)) from None
                time.sleep(0.05)

    def run(self, name, *arguments):
        """Runs a command: its status, its reply and its message, which names no private file."""
        status, reply, message = self.module.run_command(
            [self.command(name)] + list(arguments), encoding=None, expand_user_and_vars=False,
            pass_fds=self.lock_descriptors, handle_exceptions=False)
        message = decoded(message)
        for private, path in self.aliases.items():
            message = message.replace(private, path)
        message = printable(message).strip().replace('\n', '; ')
        return status, decoded(reply), message or 'status %d without a message' % status

    def asked(self, name, *arguments):
        """The reply of a command that has to succeed."""
        status, reply, message = self.run(name, *arguments)
        if status != 0:
            raise Failure(message)
        return reply

    def fetch(self, path, section, key):
        """The value of an entry, or None. The file has to load for that."""
        reply = self.asked('ov_conf', '-f', path, '-s', section, '-k', key)
        if reply.startswith('1: '):
            return reply[len('1: '):].rstrip('\n')
        return None

    def read(self):
        try:
            return read_file(self.path)
        except FileNotFoundError:
            raise Failure('there is no file %s' % self.path) from None
        except PermissionError:
            raise Failure('cannot read %s: that takes the super-user (become)'
                          % self.path) from None


def refuse_others():
    """Raises when who runs the module is not the super-user."""
    if os.getuid() != 0:
        raise Failure('a change takes the super-user (become)')


def run_module(module, work):
    """Ends the module with what `work` gives, or with why it failed."""
    try:
        result = work(module)
    except Failure as failure:
        module.fail_json(msg=str(failure))
    except OSError as error:
        module.fail_json(msg=str(error))
    module.exit_json(**result)
