#include "conf/aux_sections.h"

#include "conf/loader.h"

namespace ov {

namespace {

void read_rows(const char* file, unsigned mask, Reader reader) {
    if (const Snapshot* snapshot = scan_for_loading(file)) {
        load_rows(*snapshot, file, mask, reader);
    }
}

} // namespace

void read_config_transfer(const char* file, unsigned mask) {
    read_rows(file, mask, TransferReader);
}

void read_config_cypher(const char* file, unsigned mask) {
    read_rows(file, mask, CypherReader);
}

void read_config_search(const char* file, unsigned mask) {
    read_rows(file, mask, SearchReader);
}

} // namespace ov
