// What takes more than one key: the steps that stand among the rows of the catalogue.
#pragma once

#include "catalogue/rule.h"

namespace ov::steps {

// The keys of the chosen submission program become those of sendmail, which the rest of the
// gateway reads.
Verdict chosen_program(const Loading& value);

// Forwarding needs an address to forward to: without one its mode becomes "none", with a warning.
Verdict forward_mode(const Loading& value);

// Tries whether messages can be linked from queue to queue, and moved into quarantine. Where they
// cannot, the setting is switched off.
Verdict archive_hard_link(const Loading& value);
Verdict quarantine_hard_link(const Loading& value);

} // namespace ov::steps
