#include "driver_devmode/qvdm.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include "driver_devmode/document_folders.h"
#include "mox_classes/text/log_here.h"
#include "mox_classes/text/sysutils.h"

using Mox::LogHere;

namespace {

constexpr int kPoolUnits = QV_DEVMODE_EXTRA::kPoolUnits;

// The text of a field of `capacity` units, up to its first zero if it has one.
UnicodeString FromField(const WCHAR* field, int capacity) {
    return UnicodeString(field, std::find(field, field + capacity, WCHAR{0}) - field);
}

}  // namespace

// The object is complete before the texts are made, so that its block is freed when one fails.
TQVDM::TQVDM() : TQVDM(static_cast<DEVMODEW*>(nullptr)) {
    FDM = std::make_unique<QV_DEVMODE>().release();
    FOwnDM = true;
    block_size_ = QV_DEVMODE::Size();
    DeviceName = FromField(FDM->dmDeviceName, CCHDEVICENAME);
    FormName = FromField(FDM->dmFormName, CCHFORMNAME);
    Directory = GetUserDocument(UnicodeString());
    FileName = Sysutils::ConfirmPathString(Directory) + TEXT("fax.tif");
    Encode();
}

TQVDM::TQVDM(DEVMODEW* dm)
    : FOwnDM(false),
      FDM(static_cast<QV_DEVMODE*>(dm)),
      block_size_(dm == nullptr ? 0
                                : std::max(dm->dmSize + dm->dmDriverExtra, QV_DEVMODE::Size())) {
    Decode();
}

TQVDM::TQVDM(const TQVDM& other)
    : FOwnDM(false),
      FDM(other.FDM),
      DeviceName(other.DeviceName),
      FormName(other.FormName),
      Directory(other.Directory),
      FileName(other.FileName),
      Target(other.Target),
      block_size_(other.block_size_) {}

TQVDM& TQVDM::operator=(const TQVDM& other) {
    if (this == &other) return *this;
    if (FDM != other.FDM) {
        release();
        FDM = other.FDM;
        block_size_ = other.block_size_;
    }
    DeviceName = other.DeviceName;
    FormName = other.FormName;
    Directory = other.Directory;
    FileName = other.FileName;
    Target = other.Target;
    return *this;
}

TQVDM::~TQVDM() {
    release();
}

void TQVDM::release() {
    if (FOwnDM) const std::unique_ptr<QV_DEVMODE> owner(FDM);
    FOwnDM = false;
    FDM = nullptr;
}

void TQVDM::Assign(TQVDM* source) {
    if (source == nullptr || source->FDM == nullptr || FDM == nullptr) return;
    std::memmove(static_cast<void*>(FDM), source->FDM, sizeof(QV_DEVMODE));
    DeviceName = source->DeviceName;
    FormName = source->FormName;
    Directory = source->Directory;
    FileName = source->FileName;
    Target = source->Target;
    Encode();
}

bool TQVDM::SetDEVMODE(DEVMODEW* dm) {
    return QV_DEVMODE::IsValidQV_DEVMODE(dm)
               ? borrow(dm, std::max(dm->dmSize + dm->dmDriverExtra, QV_DEVMODE::Size()))
               : borrow(nullptr, 0);
}

bool TQVDM::SetDEVMODE(DEVMODEW* dm, int size) {
    return QV_DEVMODE::IsValidQV_DEVMODE(dm, size) ? borrow(dm, size) : borrow(nullptr, 0);
}

bool TQVDM::borrow(DEVMODEW* dm, int size) {
    if (dm == nullptr) {
        LogHere('X',
                TEXT("[TQVDM::SetDEVMODE()] Cannot set the DEVMODE structure: Invalid QV_DEVMODE"));
        return false;
    }
    auto* block = static_cast<QV_DEVMODE*>(dm);
    if (block != FDM) release();
    FDM = block;
    block_size_ = size;
    return Decode();
}

bool TQVDM::StatedSizeFits() const {
    return FDM != nullptr && FDM->dmSize + FDM->dmDriverExtra <= block_size_;
}

bool TQVDM::Decode() {
    if (FDM == nullptr) return false;
    DeviceName = FromField(FDM->dmDeviceName, CCHDEVICENAME);
    FormName = FromField(FDM->dmFormName, CCHFORMNAME);
    if (!QV_DEVMODE::IsValidQV_DEVMODE(FDM)) {
        LogHere('X', TEXT("[TQVDM::Decode()] Cannot decode the QV_DEVMODE structure"));
        return false;
    }
    return ReadString(Directory, FDM->exOut.DirectoryOffset) &&
           ReadString(FileName, FDM->exOut.FileNameOffset) &&
           ReadString(Target, FDM->exRun.TargetOffset);
}

bool TQVDM::Encode() {
    if (FDM == nullptr) return false;
    Sysutils::CopyCch(FDM->dmDeviceName, CCHDEVICENAME, DeviceName);
    Sysutils::CopyCch(FDM->dmFormName, CCHFORMNAME, FormName);
    short position = 1;
    FDM->exPool[0] = 0;
    // A later text that kept its old offset would be read from the bytes of an earlier one.
    bool fits = true;
    const auto put = [&](const UnicodeString& text) {
        short offset = 0;
        fits = fits && WriteString(offset, position, text);
        return offset;
    };
    FDM->exOut.DirectoryOffset = put(Directory);
    FDM->exOut.FileNameOffset = put(FileName);
    FDM->exRun.TargetOffset = put(Target);
    return fits;
}

bool TQVDM::ReadString(UnicodeString& text, short offset) {
    if (FDM == nullptr || offset < 0 || offset >= kPoolUnits) return false;
    if (offset == 0) {
        text = UnicodeString();
        return true;
    }
    const WCHAR* const begin = FDM->exPool + offset;
    const WCHAR* const pool_end = FDM->exPool + kPoolUnits;
    const WCHAR* const end = std::find(begin, pool_end, WCHAR{0});
    text = end == pool_end ? UnicodeString() : UnicodeString(begin, end - begin);
    return end != pool_end;
}

bool TQVDM::WriteString(short& offset, short& position, UnicodeString text) {
    const int length = text.Length();
    offset = 0;
    if (FDM == nullptr || position < 1 || length > kPoolUnits - 1 - position) return false;
    if (length == 0) return true;
    offset = position;
    WCHAR* const target = FDM->exPool + position;
    std::copy_n(text.t_str(), length + 1, target);
    position = static_cast<short>(position + length + 1);
    return true;
}

void TQVDM::CopyTo(DEVMODEW* target) {
    if (FDM == nullptr) {
        LogHere('X', TEXT("[TQVDM::CopyTo()] FDM cannot be NULL"));
    } else if (target == nullptr) {
        LogHere('X', TEXT("[TQVDM::CopyTo()] Target cannot be NULL"));
    } else {
        std::memmove(static_cast<void*>(target), FDM, sizeof(QV_DEVMODE));
    }
}
