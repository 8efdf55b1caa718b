#include "ctl/audit.h"
#include "ctl/json.h"
#include "ctl/leftovers.h"
#include "ctl/options.h"
#include "ctl/replace.h"
#include "ctl/subject.h"
#include "reference/text.h"
#include "util/process.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>

namespace ov::ctl {

namespace {

std::string time_of(const Leftover& left) {
    std::array<char, sizeof "2026-12-31 23:59:59"> text{};
    tm local{};
    ::localtime_r(&left.time, &local);
    std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &local);
    return text.data();
}

void print(const std::vector<Leftover>& all, const Options& options) {
    if (options.json) {
        std::fputs(json_of(all).c_str(), stdout);
        return;
    }
    for (const Leftover& left : all) {
        std::printf("%s: %s, %lld bytes, %s: %s\n", printable(left.name).c_str(), origin_of(left),
                    static_cast<long long>(left.size), time_of(left).c_str(),
                    in_words(left).c_str());
    }
}

int put_back(const Leftover& left, Target& target) {
    const HeldSignals held; // what has been done is logged
    std::optional<std::string> text = text_of(left, target.place, target.read);
    if (!text) {
        return failed(left.name + ": " + std::strerror(errno), NotOpened);
    }
    const Replaced replaced = replace(target, *text);
    if (!replaced.error.empty()) {
        return failed(replaced.error, NotOpened);
    }
    if (!replaced.note.empty()) {
        const char* how = replaced.how == How::InPlace ? "written in place, because " : "";
        failed(target.path + ": " + how + replaced.note, Good);
    }
    audit(target.path, "text put back from " + left.name);
    target.text = std::move(*text);
    return Good;
}

// Does what is told with one of the leftovers.
int act(const std::vector<Leftover>& all, Target& target, const Options& options) {
    const std::string& name = options.put_back ? *options.put_back : *options.remove;
    const auto left = std::find_if(all.begin(), all.end(),
                                   [&name](const Leftover& one) { return one.name == name; });
    if (left == all.end()) {
        return failed("there is no leftover " + name, NoSuchName);
    }
    if (!left->reason.empty()) {
        return failed(name + " is not touched: " + left->reason, NotGood);
    }
    if (options.put_back && !left->may_be_put_back()) {
        return failed(name + " is not put back: " + in_words(*left), NotGood);
    }
    const int status = options.put_back ? put_back(*left, target) : Good;
    const Place place{pin(target.place.directory), name};
    if (status == Good && place.remove() != 0 && errno != ENOENT) {
        return failed(name + ": " + std::strerror(errno), NotOpened);
    }
    return status;
}

} // namespace

int recover(const Options& options) {
    if (!options.operands.empty() || (options.put_back && options.remove)) {
        return wrong_call(options.operands.empty() ? "--put-back and --remove exclude each other"
                                                   : "recover takes no arguments");
    }
    Subject subject = subject_of(options);
    for (const Finding& error : subject.errors) {
        std::fputs(in_words(error, "error").c_str(), stderr);
    }
    if (subject.status != Good) {
        return subject.status;
    }
    subject.wish.only_look = !options.put_back && !options.remove;
    subject.wish.interrupted = true;
    Opened opened = open_target(subject.wish);
    if (!opened.target) {
        return failed(opened.error, NotOpened);
    }
    Target& target = *opened.target;
    if (!can_list(target.place)) {
        return failed(target.path + ": its directory cannot be listed: " + std::strerror(errno),
                      NotOpened);
    }
    std::vector<Leftover> all = leftovers(target.place, target.read, target.text);
    if (subject.wish.only_look) {
        print(all, options);
        return all.empty() ? Good : NotGood;
    }
    const int status = act(all, target, options);
    if (options.json && status == Good) {
        print(leftovers(target.place, target.read, target.text), options);
    } else if (status == Good) {
        std::printf("%s: %s\n", printable(target.path).c_str(),
                    printable(options.put_back ? "the text of " + *options.put_back + " is put back"
                                               : *options.remove + " is removed")
                        .c_str());
    }
    return status;
}

} // namespace ov::ctl
