#include "security/accounts.h"

#include <grp.h>
#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <string_view>
#include <vector>

namespace host {
namespace {

constexpr std::string_view kAdministratorGroups[] = {"root", "sudo", "admin", "wheel"};
// An account record larger than this is not a real one.
constexpr std::size_t kMaxRecordBytes = 1u << 20;

// The name in the account record of `id`, read with one of the C library's get...id_r; "" without a
// record.
template <class Record, class Id>
std::string NameIn(int (*find)(Id, Record*, char*, std::size_t, Record**), char* Record::*name,
                   Id id) {
    for (std::size_t bytes = 1024; bytes <= kMaxRecordBytes; bytes *= 4) {
        std::vector<char> texts(bytes);
        Record record;
        Record* found = nullptr;
        const int error = find(id, &record, texts.data(), texts.size(), &found);
        if (error == 0 && found != nullptr) return found->*name;
        if (error != ERANGE) break;
    }
    return {};
}

std::vector<gid_t> Groups() {
    std::vector<gid_t> groups(static_cast<std::size_t>(std::max(getgroups(0, nullptr), 0)));
    const int count = getgroups(static_cast<int>(groups.size()), groups.data());
    groups.resize(static_cast<std::size_t>(std::max(count, 0)));
    groups.push_back(getegid());
    return groups;
}

bool IsAdministrative(gid_t group) {
    const std::string name = NameIn(getgrgid_r, &group::gr_name, group);
    return std::find(std::begin(kAdministratorGroups), std::end(kAdministratorGroups), name) !=
           std::end(kAdministratorGroups);
}

}  // namespace

std::string NameOfUser(uid_t user) {
    const std::string name = NameIn(getpwuid_r, &passwd::pw_name, user);
    return name.empty() ? std::to_string(user) : name;
}

bool IsAdministrator() {
    if (geteuid() == 0) return true;
    const std::vector<gid_t> groups = Groups();
    return std::any_of(groups.begin(), groups.end(), IsAdministrative);
}

}  // namespace host
