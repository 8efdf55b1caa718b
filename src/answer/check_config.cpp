#include "answer/check_config.h"

#include "catalogue/catalogue.h"

namespace ov {

int is_acceptable(const Columns& row, const Variable& variable, const std::string& value) {
    if (value.empty() && row.empty != Empty::AsTheKind) {
        return row.empty == Empty::Accepted;
    }
    return check_of(row.check).accepts({manner_of(row.check), variable, value});
}

int check_config(const char* section, const char* key, const char* value) {
    const Row* row = section && key && value ? find_row(section, key) : nullptr;
    return row && is_acceptable(*row, variable_of(*row), value) ? 0 : -1;
}

} // namespace ov
