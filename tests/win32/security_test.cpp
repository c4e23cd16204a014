// Users and rights: identifiers, tokens, access checks, names, the service manager.
#include <gtest/gtest.h>
#include <windows.h>

#include <winsvc.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "win32/file_fixture.h"

namespace {

using test::ErrorUnless;
using test::kUntouched;
using test::Wide;

constexpr DWORD kRead = FILE_GENERIC_READ;
constexpr DWORD kWrite = FILE_GENERIC_WRITE;

PSID NewSid(BYTE last_authority, BYTE count, DWORD a, DWORD b = 0) {
    SID_IDENTIFIER_AUTHORITY authority = {{0, 0, 0, 0, 0, last_authority}};
    PSID sid = nullptr;
    SetLastError(kUntouched);
    AllocateAndInitializeSid(&authority, count, a, b, 0, 0, 0, 0, 0, 0, &sid);
    return sid;
}

HANDLE ProcessToken(DWORD access) {
    HANDLE token = nullptr;
    EXPECT_TRUE(OpenProcessToken(GetCurrentProcess(), access, &token));
    return token;
}

// Impersonates its own user for one test.
class AccessChecks : public test::FileTest {
  protected:
    void SetUp() override {
        FileTest::SetUp();
        ASSERT_TRUE(ImpersonateSelf(SecurityImpersonation));
        ASSERT_TRUE(OpenThreadToken(GetCurrentThread(), TOKEN_ALL_ACCESS, TRUE, &token_));
        MakeFile(file_ = Path(TEXT("a.txt")), "a");
    }
    void TearDown() override {
        CloseHandle(token_);
        RevertToSelf();
        FileTest::TearDown();
    }
    // The last error of the check, or NO_ERROR with the results in the members.
    DWORD Check(HANDLE token, DWORD desired, DWORD privilege_bytes = sizeof(PRIVILEGE_SET)) {
        DWORD bytes = 0;
        GetFileSecurityW(file_.c_str(), kWanted, nullptr, 0, &bytes);
        std::vector<BYTE> descriptor(bytes);
        EXPECT_TRUE(GetFileSecurityW(file_.c_str(), kWanted, descriptor.data(), bytes, &bytes));
        GENERIC_MAPPING mapping = {1, 2, 4, 8};
        PRIVILEGE_SET privileges = {};
        SetLastError(kUntouched);
        return ErrorUnless(AccessCheck(descriptor.data(), token, desired, &mapping, &privileges,
                                       &privilege_bytes, &granted_, &status_));
    }

    static constexpr DWORD kWanted =
        OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION;
    HANDLE token_ = nullptr;
    Wide file_;
    DWORD granted_ = kUntouched;
    BOOL status_ = FALSE;
};

}  // namespace

TEST(SecurityIds, AreEqualByAuthorityAndEveryPart) {
    const std::array<PSID, 5> sids = {NewSid(5, 2, 32, 544), NewSid(5, 2, 32, 544),
                                      NewSid(5, 2, 32, 545), NewSid(1, 2, 32, 544),
                                      NewSid(5, 1, 32)};
    EXPECT_TRUE(EqualSid(sids[0], sids[1]));
    for (size_t i = 2; i < sids.size(); ++i) EXPECT_FALSE(EqualSid(sids[0], sids[i])) << i;
    for (const PSID sid : sids) EXPECT_EQ(FreeSid(sid), nullptr);
    EXPECT_EQ(ErrorUnless(NewSid(5, 9, 32)), DWORD{ERROR_INVALID_SID});
    const PSID longest = NewSid(5, 8, 32);
    EXPECT_NE(longest, nullptr);
    FreeSid(longest);
}

TEST(Tokens, ListTheirGroups) {
    const HANDLE token = ProcessToken(TOKEN_QUERY);
    DWORD needed = 0;
    EXPECT_EQ(ErrorUnless(GetTokenInformation(token, TokenGroups, nullptr, 0, &needed)), 122u);
    std::vector<SID_AND_ATTRIBUTES> buffer(needed / sizeof(SID_AND_ATTRIBUTES) + 1);
    const DWORD few = needed - 1;
    EXPECT_EQ(ErrorUnless(GetTokenInformation(token, TokenGroups, buffer.data(), few, &needed)),
              122u);
    ASSERT_TRUE(GetTokenInformation(token, TokenGroups, buffer.data(), needed, &needed));
    const auto* list = reinterpret_cast<const TOKEN_GROUPS*>(buffer.data());
    const PSID everyone = NewSid(1, 1, 0);
    EXPECT_TRUE(std::any_of(
        list->Groups, list->Groups + list->GroupCount,
        [everyone](const SID_AND_ATTRIBUTES& group) { return EqualSid(group.Sid, everyone); }));
    FreeSid(everyone);
    CloseHandle(token);

    const HANDLE blind = ProcessToken(TOKEN_DUPLICATE);
    const auto ask = [&] {
        return ErrorUnless(GetTokenInformation(blind, TokenGroups, buffer.data(), needed, &needed));
    };
    EXPECT_EQ(ask(), DWORD{ERROR_ACCESS_DENIED});
    CloseHandle(blind);
    EXPECT_EQ(ask(), DWORD{ERROR_INVALID_HANDLE});
}

TEST(AccessRights, GenericOnesAreMapped) {
    GENERIC_MAPPING mapping = {0x1, 0x2, 0x4, 0x8};
    const DWORD rows[][2] = {{GENERIC_READ, 1},
                             {GENERIC_WRITE | 0x100, 0x102},
                             {GENERIC_EXECUTE | GENERIC_ALL, 0xC},
                             {SYNCHRONIZE, SYNCHRONIZE}};
    for (const auto& row : rows) {
        DWORD access = row[0];
        MapGenericMask(&access, &mapping);
        EXPECT_EQ(access, row[1]);
    }
}

TEST_F(AccessChecks, AnswerWhatTheyCanJudge) {
    const HANDLE process = ProcessToken(TOKEN_ALL_ACCESS);
    EXPECT_EQ(Check(process, kRead), DWORD{ERROR_NO_IMPERSONATION_TOKEN});
    CloseHandle(process);
    EXPECT_EQ(Check(token_, GENERIC_READ), DWORD{ERROR_GENERIC_NOT_MAPPED});
    EXPECT_EQ(Check(token_, kRead, 4), DWORD{ERROR_INSUFFICIENT_BUFFER});
    EXPECT_EQ(Check(nullptr, kRead), DWORD{ERROR_INVALID_HANDLE});
    EXPECT_EQ(granted_, kUntouched);
    EXPECT_EQ(Check(token_, MAXIMUM_ALLOWED), DWORD{NO_ERROR});
    EXPECT_EQ(granted_ & kWrite, kWrite);
}

TEST(ServiceManager, HasOneDatabaseOnThisMachine) {
    const SC_HANDLE none = OpenSCManagerW(nullptr, TEXT("NoSuchDatabase"), SC_MANAGER_CONNECT);
    test::ExpectExceptOnWine(ErrorUnless(none) == ERROR_DATABASE_DOES_NOT_EXIST,
                             "an unknown database does not exist");
    const SC_HANDLE manager = OpenSCManagerW(nullptr, TEXT("ServicesActive"), SC_MANAGER_CONNECT);
    if (manager == nullptr) {
        EXPECT_EQ(GetLastError(), DWORD{ERROR_ACCESS_DENIED});
        return;
    }
    EXPECT_TRUE(CloseServiceHandle(manager));
    EXPECT_EQ(ErrorUnless(CloseServiceHandle(manager)), DWORD{ERROR_INVALID_HANDLE});
}
