#include "kinds/tables.h"

#include "util/text.h"

namespace ov {

int val_vtab(int table, std::string_view word) {
    if (table < 0 || table >= Tables) {
        return -1;
    }
    for (const VTAB* row = VTable[table]; row->str; ++row) {
        if (same_word(row->str, word)) {
            return row->val;
        }
    }
    return -1;
}

const char* str_vtab(int table, int val) {
    if (table < 0 || table >= Tables) {
        return nullptr;
    }
    for (const VTAB* row = VTable[table]; row->val >= 0; ++row) {
        if (row->val == val) {
            return row->str;
        }
    }
    return nullptr;
}

const char* str_addrselect(int val) {
    return str_vtab(AddrSelectTable, val);
}

} // namespace ov
