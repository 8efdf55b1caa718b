// The loading of a main file and of a rights file, in a throwaway installation: loaded twice as
// once, each setting as its value alone would make it, and a refusal of what stands in the file.
//
// Input: on its line "m" and the load mask, or "s" and the mask for the rows of the search service,
// or "r" and a role for the rights; and the file.
#include "catalogue/reset.h"
#include "catalogue/rights.h"
#include "catalogue/settings.h"
#include "conf/lookup.h"
#include "kinds/kinds.h"
#include "kinds/loading.h"
#include "load/configuration.h"
#include "load/roles.h"
#include "load/setdir.h"
#include "support.h"
#include "util/disk.h"

#include <cstring>
#include <filesystem>

using namespace ov;
using namespace ov::fuzz;

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t most);

namespace {

struct File {
    std::string path;
    std::string text;
    char kind;     // the first character of the input
    unsigned mask; // of the load
    unsigned role; // whose rights they are
};

// The settings of an installation in which nothing has been loaded.
void start() {
    reset_settings();
    RootDirectory.set(scratch("root/"));
    QueueDirectory.set(scratch("root/"));
    for (const char* name : {"etc/group", "admin", "mqueue", "aqueue", "template", "history"}) {
        std::filesystem::create_directories(scratch("root/") + name);
    }
    // No test files in directories that the input names.
    ArchiveHardLink = QuarantineHardLink = 0;
}

// The lookup of one key in the mode of its row; booleans are tokens. Returns its line, or 0.
int entry_of(const File& file, const char* section, const Columns& row, std::string& value) {
    const bool token = &kind_of(row.load) == &kinds::Boolean;
    Source source{std::string_view(file.text)};
    _getprofile(source, section, key_of(row), value, MaxText + 1,
                token ? TokenMode : manner_of(row.load).mode);
    return scan_linenumber;
}

// Loads the file. Returns the refusal as text, empty when there is none.
std::string loaded(const File& file) {
    std::optional<Configuration> opened = Configuration::open(file.path.c_str());
    const char* section = AllRoles[file.role].section;
    auto& [snapshot, load] = opened.value();
    load.mask = file.mask;
    const std::optional<Refusal> refusal =
        file.kind == 'r'   ? load_rights(load, snapshot, section, static_cast<int>(file.role))
        : file.kind == 's' ? load_rows(load, snapshot, SearchReader)
                           : load_settings(*opened, file.mask);
    if (!refusal) {
        return "";
    }
    const auto& [verdict, reader, name, line, given_section, given_key, value, error] = *refusal;
    require(verdict != Verdict::NotFullPath || !value.starts_with('/'), "it is a full path");
    const char* key = given_key ? given_key : "";
    const Row* of_key = find_row(given_section ? given_section : "", key);
    const Columns* row = of_key ? static_cast<const Columns*>(of_key) : find_right(key);
    if (row && name == load.file) { // and no local supplement
        std::string refused;
        require_equal(line, entry_of(file, given_section, *row, refused), "line of a refusal");
        require_equal(value, refused, "value of a refusal");
    }
    return std::to_string(static_cast<int>(verdict)) + ' ' + key + ' ' + std::to_string(line) +
           ' ' + value;
}

// Loads each value by itself over what has been loaded: nothing changes.
void check_values(const std::vector<std::string>& initial, const File& file) {
    Load load{.file = file.path.c_str(), .mask = file.mask};
    const Reader reader = file.kind == 's' ? SearchReader : MainReader;
    for (const Row& row : catalogue()) {
        const Gate& gate = row.gate;
        const std::string_view key = key_of(row);
        const bool is_read = (gate.readers & reader) && (!gate.any || (gate.any & file.mask)) &&
                             !(gate.unless & file.mask);
        // The keys of the submission programs, and this mode, depend on others.
        if (!is_read || gate.program || key.starts_with("Sendmail") || key == "ForwardMode") {
            continue;
        }
        const Variable setting = variable_of(row);
        const Kind& kind = kind_of(row.load);
        const std::string once = shown(setting);
        std::string text;
        if (entry_of(file, section_of(row), row, text) > 0) {
            const Value value{manner_of(row.load), setting, text};
            require(kind.load({value, load, reader, section_of(row), 0}) == Verdict::Taken, key);
            require_equal(once, shown(setting), key);
        } else if (kind.absent == keep_default) {
            require_equal(once, initial[number_of(row)], key);
        }
    }
}

// The directories are established as they are loaded.
void check_directories(const File& file) {
    const auto found = [] {
        return shown(&RootDirectory) + shown(&EtcDirectory) + shown(&TemplateDirectory);
    };
    start();
    if (setdir(file.path.c_str()) != 0) {
        return;
    }
    require(isvalid_dir(RootDirectory.c_str()) && isvalid_dir(EtcDirectory.c_str()) &&
                (!TemplateDirectory || isvalid_dir(TemplateDirectory.c_str())),
            "a directory that is none");
    const std::string once = found();
    require(setdir(file.path.c_str()) == 0 && found() == once, "directories established twice");
    start();
    Load load{.file = file.path.c_str(), .mask = 0};
    const std::optional<Snapshot> snapshot = Snapshot::open(load.file, key_index());
    require(load_rows(load, snapshot.value(), CypherReader) || found() == once,
            "directories are loaded otherwise");
}

} // namespace

// Directories are made in the installation only.
extern "C" int __real_mkdirat(int directory, const char* name, mode_t mode);
extern "C" int __wrap_mkdirat(int directory, const char* name, mode_t mode) {
    std::error_code none;
    const auto link = "/proc/self/fd/" + std::to_string(directory);
    if (std::filesystem::read_symlink(link, none).native().starts_with(scratch())) {
        return __real_mkdirat(directory, name, mode);
    }
    errno = EACCES;
    return -1;
}

// Puts an entry of some key behind the first line; now and then, the input changes otherwise.
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t most, unsigned seed) {
    const Row& row = catalogue()[seed / 32 % catalogue().size()];
    const std::string highest = std::to_string(manner_of(row.load).highest);
    const std::string_view values[] = {
        highest,  "000000025",  "-1",          "0x10",     "99",      "20M",      "2147483648",
        "yes",    "4294967295", "999999999G",  "none",     "both",    "",         "\"a # b\"",
        "[x]",    "/tmp",       "etc",         "admin/",   "a@b;c@d", "10.1.:*",  "2008/12/31",
        "a:b::c", "{25:z}",     "mx:25 _MSP_", "mx:60001", "1",       "no # \"x", "a@b{9:,c}",
    };
    std::string input(reinterpret_cast<const char*>(data), size);
    const bool of_rights = input.starts_with('r');
    const Columns& key =
        of_rights ? rights()[seed / 32 % rights().size()] : static_cast<const Columns&>(row);
    std::string entry = "[";
    entry += !of_rights ? section_of(row) : seed & 0x10000 ? AdminSection : ManagerSection;
    entry += std::string("]\n") + key_of(key) + " = ";
    entry += std::string(values[(seed >> 17) % std::size(values)]) + '\n';
    input.insert(std::min(input.find('\n') + 1, size), entry);
    if (seed % 3 == 0 || input.size() > most) {
        return LLVMFuzzerMutate(data, size, most);
    }
    std::copy(input.begin(), input.end(), data);
    return input.size();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const std::string line = input.line() + ' ';
    const auto number = static_cast<unsigned>(std::strtoul(line.c_str() + 1, nullptr, 10));
    const std::string text = input.rest();
    const File file{scratch("main.conf"), text, line[0], number & 0x230ff, number % Roles};
    for (const char* key : {"ArchiveHardLink", "QuarantineHardLink"}) {
        std::string value;
        if (entry_of(file, "Directories", *find_row("Directories", key), value) > 0) {
            return -1;
        }
    }

    write_file(file.path, text);
    check_directories(file);
    start();
    const std::vector<std::string> initial = shown_settings();
    const std::string refusal = loaded(file);
    const std::vector<std::string> once = shown_settings();
    if (refusal.empty()) {
        require(loaded(file).empty() && shown_settings() == once, "loaded twice");
        if (file.kind != 'r' && !(file.mask & RC_AUXONLY)) {
            check_values(initial, file);
        }
    }
    start();
    require_equal(loaded(file), refusal, "loaded again");
    require(shown_settings() == once, "loaded again");
    return 0;
}
