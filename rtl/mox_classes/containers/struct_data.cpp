#include "mox_classes/containers/struct_data.h"

#include <cstring>
#include <type_traits>

#include "mox_classes/text/unicode_string.h"

using System::TRCMSpec;
using System::UnicodeString;

namespace {

constexpr int kErrorCount = -1;
constexpr TRCMSpec kSpec(sizeof(TW32StructDataBase::DataRec),
                         offsetof(TW32StructDataBase::DataRec, ref_count), 0, 1);

static_assert(std::is_nothrow_move_constructible_v<TW32StructData<DWORD>> &&
              std::is_nothrow_move_assignable_v<TW32StructData<DWORD>>);

}  // namespace

TW32StructDataBase::TW32StructDataBase(const TW32StructDataBase& other) {
    Assign(other.FData);
}

// cppcheck-suppress operatorEqVarError ; assigned through its address
// Sharing the own block changes nothing.  NOLINTNEXTLINE(bugprone-unhandled-self-assignment)
TW32StructDataBase& TW32StructDataBase::operator=(const TW32StructDataBase& other) {
    Assign(other.FData);
    return *this;
}

void TW32StructDataBase::Clear() {
    kSpec.Clear(FData);
}

void TW32StructDataBase::Assign(void* data) {
    kSpec.Assign(FData, data);
}

DWORD TW32StructDataBase::GetErrorCode() const {
    if (IsSuccess()) return 0;
    DWORD code;
    std::memcpy(&code, FData, sizeof code);
    return code;
}

void TW32StructDataBase::SetErrorCode(DWORD code) {
    // Without memory what was held stays: an empty holder would count as success.
    TW32StructDataBase failed;
    failed.SetBufferSize(sizeof code, kErrorCount, 0);
    std::memcpy(failed.FData, &code, sizeof code);
    std::swap(FData, failed.FData);
}

void TW32StructDataBase::Unique() {
    // A sole holder keeps its block: the records may hold pointers into it.
    if (FData == nullptr || kSpec.Count(FData).load() == 1) return;
    // A new size keeps nothing of a failure.
    if (!IsSuccess()) return SetErrorCode(GetErrorCode());
    SetBufferSize(Size(), Count(), static_cast<int>(GetRec()->record_size));
}

TW32StructDataBase::DataRec* TW32StructDataBase::SetBufferSize(int size, int count,
                                                               int record_size) {
    if (!IsSuccess()) Clear();
    // The other holders may release the old block at any time. This holder keeps it alive while its
    // bytes are copied.
    TW32StructDataBase old;
    const bool shared = FData != nullptr && kSpec.Count(FData).load() > 1;
    if (shared) old = *this;

    // Records may hold pointers into their block, so it is moved only when its size changes.
    const bool stays = FData != nullptr && !shared && size == Size();
    if (!stays && kSpec.SetSize(FData, size) == nullptr) return nullptr;
    DataRec* rec = GetRec();
    if (rec->buffer_size == 0) {
        rec->record_size = static_cast<std::uint32_t>(record_size);
        const int kept = old.Size() < size ? old.Size() : size;
        if (kept > 0) std::memcpy(FData, old.FData, static_cast<std::size_t>(kept));
    }
    rec->buffer_size = static_cast<std::uint32_t>(size);
    rec->count = count;
    return rec;
}

void TW32StructDataBase::ThrowIfOutOfRange(int index) const {
    if (index < 0 || index >= Count()) throw UnicodeString(TEXT("Out of index range"));
}
