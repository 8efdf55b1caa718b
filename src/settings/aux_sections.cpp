#include "settings/aux_sections.h"

namespace ov {

namespace {

void read_rows(Configuration& configuration, unsigned mask, Reader reader) {
    auto& [snapshot, load] = configuration;
    load.mask = mask;
    load.tell = print_warning;
    end_when_refused(load_rows(load, snapshot, reader));
}

void read_rows(const char* file, unsigned mask, Reader reader) {
    if (std::optional<Configuration> configuration = Configuration::open(file)) {
        read_rows(*configuration, mask, reader);
    } else {
        print_cannot_open(file);
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

void read_config_search(Configuration& configuration, unsigned mask) {
    read_rows(configuration, mask, SearchReader);
}

} // namespace ov
