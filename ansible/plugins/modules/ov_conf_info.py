#!/usr/bin/python
DOCUMENTATION = r"""
module: ov_conf_info
short_description: Read the gateway's configuration
version_added: 1.0.0
description:
  - Returns what C(ov_confctl show) says of keys and C(ov_confctl check) of the file, and the version.
  - What is wrong, or likely a mistake, is told as a warning, too.
extends_documentation_fragment: [ov.gateway.gateway, ov.gateway.gateway.info]
options:
  names:
    description:
      - Sections (C(SMTP)), keys (C(SMTP.SmtpPort)), or patterns of them (C(*.DirectoryLimitSize)), in
        any case. Without names, all keys are returned.
    type: list
    elements: str
    default: []
    version_added: 7.1.2
"""

EXAMPLES = r"""
- name: How large messages may be, and typing errors
  ov.gateway.ov_conf_info:
    names: [SMTP.MaxMessageSize]
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
keys:
  description:
    - The keys in the order of the manual, with section, key, value, default, changed, origin, kind,
      secret and typed, as ov_confctl(8) describes them. The values of passwords are none.
  returned: success
  type: list
  elements: dict
findings:
  description: The errors, then the warnings, with severity, code, file, line, section, key, value and message.
  returned: success
  type: list
  elements: dict
unknown:
  description: Those of the findings that tell of headers and entries that nobody reads.
  returned: success
  type: list
  elements: dict
"""

from ansible_collections.ov.gateway.plugins.module_utils import gateway as ov

UNKNOWN = ('unknown-section', 'unknown-key', 'before-section')


def work(module):
    (found,), _message = module.ask('check')
    (keys,), _message = module.ask('show', '--', *module.params['names'])
    _status, version, _message = module.run('--version')
    findings = [dict(finding, severity=severity) for severity in ('error', 'warning')
                for finding in found[severity + 's']]
    for finding in findings:
        module.warn('%s: %s' % (finding['severity'], ov.in_words(finding)))
    return dict(
        changed=False, version=version.split()[-1], keys=keys, findings=findings,
        unknown=[finding for finding in findings if finding['code'] in UNKNOWN])


def main():
    ov.Module(dict(ov.COMMON_OPTIONS, names=dict(type='list', elements='str', default=[]))).finish(work)


if __name__ == '__main__':
    main()
