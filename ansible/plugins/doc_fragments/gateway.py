"""What the modules of the collection have in common."""


class ModuleDocFragment:
    DOCUMENTATION = r"""
options:
  path:
    description: The main configuration file.
    type: path
    default: /etc/Tessary.conf
  command_path:
    description:
      - The directory of the commands.
      - Without it they are looked for in the C(PATH), in C(/usr/local/sbin) and in C(/usr/sbin).
    type: path
  keys:
    description:
      - The list of the keys that the commands know.
      - Without it, it is C(../share/ov-conf/keys) beside the directory of the commands.
    type: path
  lock:
    description:
      - The file that all who use the configuration lock with C(flock), so that they take turns.
      - The default is I(path) with C(.lock) in the place of C(.conf), which is C(/etc/Tessary.lock)
        for C(/etc/Tessary.conf). It is made with mode 0600 when it is missing, but not in check mode.
      - Two names of one configuration file need one lock.
    type: path
  lock_timeout:
    description: How many seconds to wait for the lock.
    type: int
    default: 30
requirements:
  - ov_conf on the gateway
"""
