// What the manual and the sample configuration say of the keys.
#include "settings/aux_sections.h"
#include "settings/catalogue.h"
#include "settings/conf.h"
#include "support.h"

#include <gtest/gtest.h>
#include <sstream>
#include <type_traits>

namespace ov {
namespace {

const std::string BuiltInFolder = "/opt/Orvanta";

std::string replaced(std::string text, const std::string& what, const std::string& with) {
    for (std::size_t at = 0; (at = text.find(what, at)) != text.npos; at += with.size()) {
        text.replace(at, what.size(), with);
    }
    return text;
}

// The numbers and the texts that are set, by section and key.
std::map<std::string, std::string> settings(int program = 0) {
    std::map<std::string, std::string> texts;
    for (const Row& row : catalogue()) {
        if (is_step(row) ||
            (program != 0 && row.gate.program != 0 && row.gate.program != program)) {
            continue;
        }
        const std::string name = std::string(section_of(row)) + ' ' + key_of(row);
        std::visit(
            [&](auto* setting) {
                using Type = std::remove_pointer_t<decltype(setting)>;
                if constexpr (std::is_integral_v<Type>) {
                    texts[name] = std::to_string(*setting);
                } else if constexpr (std::is_same_v<Type, Text>) {
                    if (*setting) {
                        texts[name] = setting->view();
                    }
                }
            },
            variable_of(row));
    }
    return texts;
}

void forget_defaults() {
    for (const Row& row : catalogue()) {
        if (is_step(row)) {
            continue;
        }
        std::visit(
            [](auto* setting) {
                using Type = std::remove_pointer_t<decltype(setting)>;
                if constexpr (std::is_integral_v<Type>) {
                    *setting = 77;
                } else if constexpr (std::is_same_v<Type, Text>) {
                    setting->set("forgotten");
                }
            },
            variable_of(row));
    }
}

void load(const std::string& file) {
    read_config(file.c_str(), 0xff | RC_NOCHECK);
    read_config_search(file.c_str(), 0xff | RC_NOCHECK);
}

// The sample with the keys in `wanted` no longer commented out.
std::string uncommented(const std::map<std::string, std::string>& wanted) {
    std::string text;
    std::string section;
    std::istringstream lines(test::read_file(OV_SHARE_DIR "/doc/defaults.conf"));
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with('[')) {
            section = line.substr(1, line.size() - 2);
        } else if (line.starts_with('#') &&
                   wanted.contains(section + ' ' + line.substr(1, line.find(' ') - 1))) {
            line.erase(0, 1);
        }
        text += line + '\n';
    }
    return text;
}

TEST(Reference, TheSampleHoldsTheDefaults) {
    const auto initial = settings();
    const test::TempDir dir;
    const std::string base = dir.path("base");
    const std::string sample = replaced(uncommented(initial), BuiltInFolder, base);
    std::filesystem::create_directories(base + "/Admin");
    std::istringstream lines(sample);
    for (std::string line; std::getline(lines, line);) {
        if (const std::size_t value = line.find("= "); line.ends_with('/') && line[0] != '#') {
            const std::string name = line.substr(value + 2);
            if (!name.starts_with('/')) {
                std::filesystem::create_directories(base + "/KORE/etc/" + name);
                std::filesystem::create_directories(base + "/KORE/" + name);
            }
        }
    }
    load(dir.file("empty", "[Directories]\nRootDirectory = " + base + "/KORE" +
                               "\nAdmDirectory = " + base + "/Admin" +
                               "\nQueueDirectory = " + base + "/KORE" + '\n'));
    const auto defaults = settings();
    const char* programs[] = {"sendmail", "postfix", "qmail"};
    for (int program = 1; program <= 3; ++program) {
        forget_defaults();
        load(dir.file("conf", replaced(sample, "Program = sendmail",
                                       std::string("Program = ") + programs[program - 1])));
        const auto loaded = settings(program);
        for (const auto& [name, value] : initial) {
            if (loaded.contains(name) && name != "SMTP MailSubmissionProgram") {
                EXPECT_EQ(replaced(loaded.at(name), base, BuiltInFolder),
                          replaced(defaults.at(name), base, BuiltInFolder))
                    << name;
            }
        }
        if (program == 1) {
            EXPECT_GT(loaded.size(), 400U);
        }
    }
}

// What a page says of one key of each kind whose text is made of more than one column.
TEST(Reference, TheManualTellsTheRow) {
    const std::string page = test::read_file(OV_SHARE_DIR "/man/man5/Tessary.conf.5");
    for (const char* entry : {
             "SmtpPort\"\nDigits: 1 to 65535, at most 5 of them.\nDefault:\n.Ql \"\\&25\" .\n"
             ".br\nCheck: the same.\nShow: number.\n",
             "PostfixNullFrom\"\nText.\nDefault:\n.Ql \"\\&<>\" .\n"
             "Read with\n.Ql \"\\&MailSubmissionProgram = postfix\"\nonly.\n"
             ".br\nCheck: no.\nShow: no.\n",
             "DenyIP\"\nIP addresses: separated by \\(dq:\\(dq.\nDefault: not set.\n"
             ".br\nCheck: IP addresses and networks; may be empty.\nShow: list, separated by "
             "\\(dq:\\(dq.\n",
             "TSmode\"\nDigits: 0 to 2, at most 1 of them.\nDefault:\n.Ql \"\\&0\" .\n"
             ".br\nCheck: digits: 0 to 9, at most 1 of them.\nShow: number.\n",
             "MaxSearchProcs\"\nDigits: from MaxSearchProcs_MIN to MaxSearchProcs_MAX.\nDefault:\n"
             ".Ql \"\\&3\" .\n.br\nCheck: digits within the defaults of these limits.\nShow: "
             "number.\n",
             "MinFree\"\nSize: to stay free where ArchiveQueue is; held in kilobytes; "
             "without a unit: M.\nDefault:\n.Ql \"\\&2M\" .\n.br\nCheck: no.\nShow: no.\n",
             "ACL_File\"\nFile: with its full path.\nDefault:\n.Ql \"\\&mss.acl\"\nin\n"
             ".Ic EtcDirectory .\n.br\nCheck: no.\nShow: no.\n",
             "Timeout_quit\"\nDigits: 0 to 9999, at most 4 of them.\nDefault:\n"
             ".Ql \"\\&120\" .\n.br\nCheck: no.\nShow: no.\n",
             "ExtractArchive\"\nBoolean.\nDefault:\n.Ql \"\\&no\" .\n"
             ".br\nCheck: the same.\nShow: true or false.\n",
             "AlternateHostID\"\nNumber: 0 to 18446744073709551615.\nDefault:\n.Ql \"\\&0\" .\n"
             ".br\nCheck: no.\nShow: no.\n",
         }) {
        EXPECT_NE(page.find(std::string(".It Ic \"\\&") + entry), std::string::npos) << entry;
    }
}

} // namespace
} // namespace ov
