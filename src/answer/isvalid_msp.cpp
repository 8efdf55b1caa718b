#include "answer/isvalid_msp.h"

#include "catalogue/settings.h"
#include "conf/lookup.h"
#include "load/configuration.h"
#include "util/disk.h"
#include "util/paths.h"

namespace ov {

namespace {

// What makes up a mail submission program: its keys in [SMTP], and the settings that hold while
// the file lacks them.
struct Program {
    const char* program_key;
    const Text& program;
    const char* queue_key;
    const Text& queue;
    const char* list_key;
    const Text& list;
};

const Program programs[] = {
    {"SendmailProgram", SendmailProgram, "SendmailQueueDirectory", SendmailQueueDirectory,
     "SendmailQueueListProgram", SendmailQueueListProgram},
    {"PostfixProgram", PostfixProgram, "PostfixQueueDirectory", PostfixQueueDirectory,
     "PostfixQueueListProgram", PostfixQueueListProgram},
    {"QmailProgram", QmailProgram, "QmailQueueDirectory", QmailQueueDirectory,
     "QmailQueueListProgram", QmailQueueListProgram},
};

// The value of a key of [SMTP]; nothing when the file lacks it.
std::optional<std::string> written(Source& file, const char* key) {
    std::string value;
    if (_getprofile(file, "SMTP", key, value, MaxText + 1, LineMode) != 0) {
        return std::nullopt;
    }
    return value;
}

// The value of a key of [SMTP], or the setting in its place.
std::optional<std::string> in_force(Source& file, const char* key, const Text& setting) {
    std::optional<std::string> value = written(file, key);
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
    const auto program = in_force(*source, chosen.program_key, chosen.program);
    const auto queue = in_force(*source, chosen.queue_key, chosen.queue);
    if (!program || !isvalid_program(program->c_str()) || !queue ||
        !isvalid_full_dir(queue->c_str())) {
        return 0;
    }
    const auto list = in_force(*source, chosen.list_key, chosen.list);
    if (!list) {
        return 1;
    }
    const WordList words = split_str(*list, " ");
    return words && !words->empty() && isvalid_program(words->front().c_str());
}

} // namespace ov
