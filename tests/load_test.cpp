// What becomes of values that are not shown, and of the queues that loading tries.
#include "addr/addr_grp.h"
#include "answer/get_vals.h"
#include "answer/isvalid_msp.h"
#include "catalogue/settings.h"
#include "fake_host.h"
#include "installation.h"
#include "load/configuration.h"
#include "load/roles.h"
#include "util/log.h"
#include "util/services.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <sys/statfs.h>
#include <unistd.h>

namespace ov {
namespace {

constexpr unsigned All = 0x00ff;

// What logging and the system services are told.
TEST(Load, ServicesAreEquipped) {
    const test::Installation gateway;
    gateway.configure("[Log]\nLogFacility = 3\nLogLevel = 4\nSystemLogOption = 5\nLogPerm = 6\n"
                      "Log_uid = 7\nLog_gid = 8\n[Archive]\nAlternateHostID = 9\n"
                      "[Debug]\nNoCore = no\n[Mail]\nGroupMaxAddresses = 10\n");
    setconfig(gateway.file.c_str(), All, NoRole, nullptr);
    EXPECT_EQ(std::tuple(services.facility, services.level, services.log_option, services.log_mode,
                         services.log_owner, services.log_group, services.alternate_host_id,
                         services.no_core, group_settings.most_addresses),
              std::tuple(3U, 4, 5U, 6, 7U, 8U, 9UL, false, 10));
    EXPECT_EQ(services.log_directory.view(), gateway.path("logs/"));
}

// An auxiliary section alone; a file that cannot be opened leaves what has been loaded.
TEST(Load, AuxiliarySections) {
    const test::Installation gateway;
    gateway.configure("[Cypher]\nencode = 5\n[Cooperation]\nFTPPort = 6\n");
    read_config_cypher(gateway.file.c_str(), 0);
    EXPECT_EQ(std::pair(IBE_encode, FTPPort), std::pair(5, 21));
    read_config_transfer(gateway.file.c_str(), 0);
    EXPECT_EQ(FTPPort, 6);
    testing::internal::CaptureStderr();
    const std::string none = gateway.path("none");
    read_config_transfer(none.c_str(), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "cannot open configfile \"" + none + "\" (2)\n");
}

TEST(Load, StoredValues) {
    const test::Installation gateway;
    // An absolute directory needs none that it could lie in.
    read_config(gateway.dir
                    .file("deep", "[Directories]\nRootDirectory = /" + std::string(4090, 'r') +
                                      "\nGroup_Dir = /g\n")
                    .c_str(),
                RC_NODIRCHECK | RC_NOCHECK);
    EXPECT_EQ(Group_Dir.view(), "/g/");
    gateway.configure(
        "[SMTP]\nSOCKEToption = -1\nServerHost = a b:10 _Msp_:5 _cmd_\nGreetingMessage =\n"
        "AllowIP = 10.1\n[NoticeMessage]\nSignature =\n"
        "[check_rcpt]\nLocalDomain = x;y,z\n[Admin]\nGroup = g\n"
        "[Archive]\nAlternateHostID = 18446744073709551615\nMinFree = 1G\n"
        "[Cooperation]\nMinFree = 2G\n");
    read_config(gateway.file.c_str(), All);
    EXPECT_EQ(SOCKEToption, 4294967295U);
    EXPECT_EQ(ServerHost.view(), "a b:10 _Msp_:5 _cmd_");
    const std::tuple<std::string, int, int> servers[] = {
        {"a", 25, 0}, {"b", 10, 0}, {"_MSP_", 0, 1}, {"_CMD_", 0, 2}, {"", 0, 0}};
    for (std::size_t i = 0; i < std::size(servers); ++i) {
        const SVRLIST& server = SvrList[i];
        EXPECT_EQ(std::tuple(std::string(server.host.view()), server.port, server.flg), servers[i]);
    }
    EXPECT_TRUE(GreetingMessage && GreetingMessage.view().empty());
    EXPECT_FALSE(NoticeSignature);
    EXPECT_EQ(CR_LocalDomain, (WordList{{"x", "y", "z"}}));
    EXPECT_EQ(AlternateHostID, 18446744073709551615UL);
    struct statfs info = {};
    ::statfs(gateway.path().c_str(), &info);
    EXPECT_EQ(ArchiveMinFree, 1048576);
    EXPECT_EQ(ArchiveMinFreeBlocks, 1048576 / info.f_bsize + 1);
    EXPECT_EQ(CoopMinFreeBlocks, 2097152 / info.f_bsize + 1);
    EXPECT_TRUE(SMTP_AllowIP && InternalDomains && CF_Group[0]);
    // Where the block size is not known, nothing has to stay free.
    std::filesystem::remove(gateway.path("aqueue"));
    gateway.configure("[Archive]\nMinFree = 1G\n");
    read_config(gateway.file.c_str(), All);
    EXPECT_EQ(std::pair(ArchiveMinFree, ArchiveMinFreeBlocks), (std::pair<int64_t, int64_t>()));
    // A number of the rights is not judged by an error of an earlier one.
    gateway.configure("[Admin]\nStatOptionMask = 3\n");
    errno = ERANGE;
    read_config_user(gateway.file.c_str(), "Admin", 0);
    EXPECT_EQ(CF_StatOptionMask[0], 3U);
    std::string path; // there are no such roles
    EXPECT_EQ(access_cffile(Roles, "taro", path, nullptr), -1);
    EXPECT_EQ(access_cffile(-1, "taro", path, nullptr), -1);
    EXPECT_EQ(conf_free(), 0);
    EXPECT_FALSE(SMTP_AllowIP || InternalDomains || CF_Group[0]);
    test::host = {"mx1", "mx1.example.net", nullptr}; // whose domain counts then
    EXPECT_EQ(get_vals(gateway.file.c_str(), "Mail", "InternalDomains", 1), "example.net");
}

// What the file lacks of a submission program is taken from the settings, which may lack it, too.
TEST(Load, SubmissionProgram) {
    const test::Installation gateway;
    gateway.configure("[SMTP]\nSendmailProgram = /bin/sh\n");
    const auto usable = [&](const char* queue, const char* list) {
        SendmailQueueDirectory.set(queue);
        SendmailQueueListProgram.set(list);
        return isvalid_msp(gateway.file.c_str());
    };
    EXPECT_EQ(usable("/tmp", "/bin/sh -v"), 1);
    const std::string none = gateway.path("none");
    EXPECT_EQ(usable(none.c_str(), "/bin/sh") + usable("/tmp", none.c_str()), 0);
}

TEST(Load, QueuesThatCannotBeLinked) {
    const test::Installation gateway;
    ProgName = "tool";
    gateway.configure("[Log]\nLogFacility = 2\nLogLevel = 2\n");
    const auto flags = [&](unsigned mask) {
        setconfig(gateway.file.c_str(), mask, NoRole, nullptr);
        EXPECT_TRUE(std::filesystem::is_empty(gateway.path("mqueue")));
        return std::pair(std::exchange(ArchiveHardLink, 1), std::exchange(QuarantineHardLink, 1));
    };
    for (const char* left_behind : {"mqueue/.qxtest", "aqueue/.qxtest", "pqueue/.qxtest"}) {
        gateway.dir.file(left_behind, "");
    }
    EXPECT_EQ(flags(All), std::pair(1, 1));
    EXPECT_TRUE(std::filesystem::is_empty(gateway.path("aqueue")) &&
                std::filesystem::is_empty(gateway.path("pqueue")));
    // A queue that is the message queue itself: nothing can be linked, but it can be moved.
    std::filesystem::remove(gateway.path("aqueue"));
    std::filesystem::create_symlink("mqueue", gateway.path("aqueue"));
    EXPECT_EQ(flags(All), std::pair(0, 1));
    std::filesystem::remove(gateway.path("aqueue"));
    std::filesystem::remove(gateway.path("pqueue"));
    ForwardMode = 1;
    EXPECT_EQ(flags(RC_MANAGE), std::pair(1, 1)); // not asked for, nor is there an address
    EXPECT_EQ(std::exchange(ForwardMode, 0), 1);
    EXPECT_EQ(flags(All), std::pair(0, 0));
    EXPECT_EQ(test::lines_of(test::logged_errors(gateway.path("logs"))).size(), 3U);
    gateway.configure("[Log]\nLogFacility = 253\nLogLevel = 2\n");
    EXPECT_EQ(flags(All), std::pair(0, 0)); // and no line more
    EXPECT_EQ(test::lines_of(test::logged_errors(gateway.path("logs"))).size(), 3U);
    // A link of somebody else to what is not his: nothing is removed, or made, behind it.
    if (test::is_root()) {
        gateway.dir.file("template/.qxtest", "");
        std::filesystem::create_symlink("template", gateway.path("aqueue"));
        ASSERT_EQ(::lchown(gateway.path("aqueue").c_str(), 12, 34), 0);
        EXPECT_EQ(flags(All), std::pair(0, 0));
        gateway.configure("[Directories]\nViewerLogDirectory = aqueue/viewer\n");
        EXPECT_EQ(test::run({"ov_conf", "-f", gateway.file, "-m"}).status, 1);
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(gateway.path("template")), {}),
                  1);
        gateway.configure("");
    }
    // Where no file can be made, nothing has been tried.
    std::filesystem::remove(gateway.path("mqueue"));
    std::filesystem::create_symlink("none", gateway.path("mqueue"));
    read_config(gateway.file.c_str(), All);
    EXPECT_EQ(std::pair(ArchiveHardLink, QuarantineHardLink), std::pair(1, 1));
}

} // namespace
} // namespace ov
