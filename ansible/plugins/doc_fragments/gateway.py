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
      - The directory of C(ov_confctl).
      - Without it that is looked for in the C(PATH), in C(/usr/local/sbin) and in C(/usr/sbin).
    type: path
requirements:
  - ov_confctl on the gateway
seealso:
  - module: ov.gateway.ov_conf
  - module: ov.gateway.ov_conf_info
  - module: ov.gateway.ov_rights
  - module: ov.gateway.ov_rights_info
author: The ov_conf maintainers (@ov)
"""

    LOCK = r"""
options:
  lock:
    description:
      - The file that all who use the configuration lock with C(flock), so that they take turns.
      - The default is I(path) with C(.lock) in the place of C(.conf). It is made when it is missing,
        but not in check mode.
    type: path
  lock_timeout:
    description: How many seconds to wait for locks.
    type: int
    default: 30
  backup: {description: "Keep the old text beside the file, with its owner and mode.", type: bool, default: false}
attributes:
  check_mode: {support: full, description: "Can tell what would be changed, and changes nothing."}
  diff_mode: {support: full, description: "Shows the entries that change, and no secrets."}
"""

    INFO = r"""
attributes:
  check_mode: {support: full, description: "Changes nothing."}
  diff_mode: {support: none, description: "Shows no differences."}
"""

    ROLE = r"""
options:
  role:
    description: The role. The last three are those of the search side.
    type: str
    required: true
    choices: [admin, manager, sysadm, search_admin, search_manager, search_sysadm]
"""
