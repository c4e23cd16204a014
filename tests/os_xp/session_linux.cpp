// Rights on the Linux host follow its users, groups and modes.
#include <gtest/gtest.h>
#include <windows.h>

#include <fstream>

#include <sys/stat.h>

#include "os_xp/administrator.h"
#include "os_xp/file_access.h"
#include "os_xp/user_name.h"
#include "support/fresh_host_root.h"
#include "support/other_user_linux.h"

namespace {

constexpr uid_t kNobody = 65534;
constexpr gid_t kNoGroup = 65534;

class OtherUsers : public testing::Test {
  protected:
    void SetUp() override {
        if (geteuid() != 0) GTEST_SKIP() << "only root can act for other users";
        chmod(root_.Folder().c_str(), 0755);
        for (const char* file : {"readable", "secret"}) {
            const std::string name = root_.Folder() + "/" + file;
            std::ofstream(name) << "x";
            chmod(name.c_str(), file[0] == 'r' ? 0644 : 0600);
        }
    }
    // The rights to a file; the code of a failure in their place.
    static DWORD Granted(const std::string& file, DWORD desired) {
        DWORD granted = 0xDEAD;
        const LONG code = CheckFileAccess(file.c_str(), granted, desired);
        return code == NO_ERROR ? granted : static_cast<DWORD>(code);
    }

    test::FreshHostRoot root_;
};

}  // namespace

TEST_F(OtherUsers, AdministratorsAreRootAndItsGroup) {
    EXPECT_TRUE(IsAdmin());
    EXPECT_TRUE(IsAdmin2());
    EXPECT_TRUE(test::HoldsForUser(kNobody, kNoGroup, [] { return !IsAdmin() && !IsAdmin2(); }));
    EXPECT_TRUE(test::HoldsForUser(kNobody, 0, [] { return IsAdmin() && !IsAdmin2(); }));
}

TEST_F(OtherUsers, FilesGrantWhatTheirModesSay) {
    const std::string readable = root_.Folder() + "/readable";
    const std::string secret = root_.Folder() + "/secret";
    EXPECT_TRUE(test::HoldsForUser(kNobody, kNoGroup, [&] {
        return Granted(readable, GENERIC_READ) == FILE_GENERIC_READ &&
               Granted(readable, GENERIC_WRITE) == 0 && Granted(readable, DELETE) == 0 &&
               Granted(readable, WRITE_DAC) == 0 && Granted(secret, GENERIC_READ) == 0 &&
               Granted(secret, FILE_READ_ATTRIBUTES) == FILE_READ_ATTRIBUTES;
    }));
    EXPECT_EQ(Granted(readable, GENERIC_EXECUTE), 0u);
    EXPECT_EQ(Granted(readable, DELETE | WRITE_DAC), DELETE | WRITE_DAC);
}

TEST_F(OtherUsers, AUserWithoutAnAccountIsANumber) {
    EXPECT_TRUE(test::HoldsForUser(4242, kNoGroup, [] {
        return GetUserNameW(false) == TEXT("4242") && GetUserNameW(true).Pos(TEXT("\\4242")) > 1;
    }));
}
