#include "answer/check_config.h"

#include "catalogue/catalogue.h"

namespace ov {

int check_config(const char* section, const char* key, const char* value) {
    const Row* row = section && key && value ? find_row(section, key) : nullptr;
    return row && accepts(*row, variable_of(*row), value) ? 0 : -1;
}

} // namespace ov
