// A throwaway installation of the gateway: its directories and its main file.
#pragma once

#include "support.h"

namespace ov::test {

class Installation {
  public:
    Installation() {
        for (const char* name : {"etc", "etc/group", "template", "logs", "mqueue", "pqueue",
                                 "aqueue", "cqueue", "admin", "history"}) {
            std::filesystem::create_directory(dir.path(name));
        }
        configure("");
    }

    // Writes the main file: the directories, a domain, and then `text`.
    void configure(std::string_view text) const {
        write_file(file, "[Directories]\nRootDirectory = " + dir.path() +
                             "\nQueueDirectory = " + dir.path() +
                             "\n[Mail]\nInternalDomains = example.com\n" + std::string(text));
    }

    std::string path(std::string_view name = "") const { return dir.path(name); }

    TempDir dir;
    std::string file = dir.path("Tessary.conf");
};

} // namespace ov::test
