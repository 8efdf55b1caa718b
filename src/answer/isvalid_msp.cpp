#include "answer/isvalid_msp.h"

#include "catalogue/catalogue.h"
#include "conf/lookup.h"
#include "kinds/tables.h"
#include "load/configuration.h"
#include "util/disk.h"
#include "util/paths.h"

namespace ov {

namespace {

// The keys in [SMTP] that make up a mail submission program.
struct Program {
    const char* program;
    const char* queue;
    const char* list;
};
constexpr Program programs[] = {
    {"SendmailProgram", "SendmailQueueDirectory", "SendmailQueueListProgram"},
    {"PostfixProgram", "PostfixQueueDirectory", "PostfixQueueListProgram"},
    {"QmailProgram", "QmailQueueDirectory", "QmailQueueListProgram"},
};

// The value of a key of [SMTP]; nothing when the file lacks it.
std::optional<std::string> written(Source& file, const char* key) {
    std::string value;
    if (_getprofile(file, "SMTP", key, value, MaxText + 1, LineMode) != 0) {
        return std::nullopt;
    }
    return value;
}

// The value of a key of [SMTP], or its setting while the file lacks it.
std::optional<std::string> in_force(Source& file, const char* key) {
    std::optional<std::string> value = written(file, key);
    const Text& setting = *std::get<Text*>(variable_of(*find_row("SMTP", key)));
    if (!value && setting) {
        value.emplace(setting.view());
    }
    return value;
}

} // namespace

int isvalid_msp(const char* file) {
    std::optional<Source> source = Source::open(file);
    if (!source) {
        print_cannot_open(file);
        return 0;
    }
    const std::optional<std::string> word = written(*source, "MailSubmissionProgram");
    if (!source->is_whole()) {
        print_cannot_open(file);
        return 0;
    }
    const int choice = word ? val_vtab(MSPSelectTable, *word) : 1;
    if (choice == -1) {
        return 0;
    }
    const Program& chosen = programs[choice == 2 || choice == 3 ? choice - 1 : 0];
    const auto program = in_force(*source, chosen.program);
    const auto queue = in_force(*source, chosen.queue);
    if (!program || !isvalid_program(program->c_str()) || !queue ||
        !isvalid_full_dir(queue->c_str())) {
        return 0;
    }
    const auto list = in_force(*source, chosen.list);
    if (!list) {
        return 1;
    }
    const WordList words = split_str(*list, " ");
    return words && !words->empty() && isvalid_program(words->front().c_str());
}

} // namespace ov
