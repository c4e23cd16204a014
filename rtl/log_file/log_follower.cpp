#include "log_file/log_follower.h"

#include <utility>

#include "log_file/log_format.h"
#include "mox_classes/memory/handles.h"

namespace Mox {

namespace {

System::TFileHandle OpenShared(const UnicodeString& name) {
    constexpr DWORD kAny = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    return System::TFileHandle(CreateFileW(name.t_str(), GENERIC_READ, kAny, nullptr, OPEN_EXISTING,
                                           FILE_ATTRIBUTE_NORMAL, nullptr));
}

// Read without the lock: only whether the bytes change matters. Empty while there is no file.
std::string Beginning(const UnicodeString& name) {
    const System::TFileHandle file = OpenShared(name);
    std::string bytes(kBeginningSize, '\0');
    DWORD done = 0;
    if (!file || !ReadFile(file.Get(), bytes.data(), kBeginningSize, &done, nullptr)) done = 0;
    bytes.resize(done);
    return bytes;
}

}  // namespace

DWORD TLogFollower::Open(const UnicodeString& fileName, TStart start) {
    const DWORD code = Begin(fileName, std::nullopt);
    if (code == NO_ERROR && start == TStart::New) GoToEnd();
    return code;
}

DWORD TLogFollower::Open(const UnicodeString& fileName, const TLogCursor& behind) {
    return Begin(fileName, behind);
}

DWORD TLogFollower::Begin(const UnicodeString& fileName, const std::optional<TLogCursor>& behind) {
    if (!OpenShared(fileName)) return GetLastError();
    name_ = fileName;
    beginning_.clear();
    reader_.Assign(nullptr, 0);  // an empty file is not copied
    behind_ = behind;
    coming_ = TLogResumed();
    if (Look() || reader_.Error().Length() == 0) return NO_ERROR;
    return reader_.Copy() == TLogCopy::Failed ? ERROR_READ_FAULT : ERROR_INVALID_DATA;
}

// The newest record that can be read tells later whether the log is another one, and what is new.
void TLogFollower::GoToEnd() {
    while (NextFound() != nullptr) {
    }
}

const TLogMsg* TLogFollower::Next() {
    const TLogMsg* record = NextFound();
    if (record == nullptr && Look()) record = NextFound();
    return record;
}

const TLogMsg* TLogFollower::NextFound() {
    const TLogMsg* const record = reader_.Next();
    if (record == nullptr) return nullptr;
    news_ = std::exchange(coming_, TLogResumed());
    behind_ = CursorAt(reader_, *record);
    return record;
}

bool TLogFollower::Look() {
    const std::string beginning = Beginning(name_);
    if (beginning.empty() || beginning == beginning_) return false;
    beginning_.clear();  // the next call tries again when this one cannot read the file
    const bool has_records = reader_.Open(name_) || reader_.StartWithoutHeader();
    if (reader_.Copy() != TLogCopy::Failed) beginning_ = beginning;
    if (!has_records || !behind_) return has_records;
    coming_ = Resume(reader_, *behind_);
    if (coming_.made_anew) behind_.reset();
    return true;
}

}  // namespace Mox
