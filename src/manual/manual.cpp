// Fills in a template: copies it with the generated text in the place of each line "@NAME@".
//   ov_manual TEMPLATE OUTPUT
#include "manual/write.h"

#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>

namespace {

void fill_in(const char* from, const char* to) {
    std::ifstream input(from);
    std::ofstream output(to);
    for (std::string line; std::getline(input, line);) {
        if (line.size() > 2 && line.front() == '@' && line.back() == '@') {
            output << ov::generated(std::string_view(line).substr(1, line.size() - 2));
        } else {
            output << line << '\n';
        }
    }
    if (!input.eof() || !output.flush()) {
        throw std::runtime_error(std::string("cannot make ") + to + " of " + from);
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: ov_manual TEMPLATE OUTPUT\n";
        return EXIT_FAILURE;
    }
    try {
        fill_in(argv[1], argv[2]);
    } catch (const std::exception& error) {
        std::cerr << "ov_manual: " << error.what() << '\n';
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
