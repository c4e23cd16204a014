// A small machine for scenarios: a host root of its own with one printer of the product, and a
// logger that only counts.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <cstring>

#include "driver_devmode/qv_devmode.h"
#include "driver_global/installation.h"
#include "mox_classes/containers/struct_data.h"
#include "mox_log/registry.h"
#include "printer_query/spooler.h"
#include "support/clean_logger.h"
#include "support/fresh_host_root.h"
#include "support/test_printers.h"

namespace faults {

inline const WCHAR* const kPrinter = TEXT("QV Fax");

/// A value of the product's key that the product does not use.
inline const WCHAR* const kNeighbour = TEXT("Neighbour");

class Machine {
  public:
    Machine() {
        errors_ = 0;
        test::CleanLogger::Logger().recordProc = Count;
        printers_.InstallPrinter(kPrinter);
        QV_DEVMODE block{};
        block.Init();
        const auto* bytes = reinterpret_cast<const BYTE*>(&block);
        printers_.SetUserDevMode(kPrinter, test::Bytes(bytes, bytes + sizeof block));
        printers_.SetDefaultDevMode(kPrinter, test::Bytes(bytes, bytes + sizeof block));
        SetValue(kNeighbour, TEXT("kept"));
    }

    /// Lines that the library has logged at level X.
    static int Errors() { return errors_; }

    /// The printer's settings for this user; a failed check when they are not whole.
    static QV_DEVMODE Settings() {
        QV_DEVMODE settings{};
        TW32StructData<DEVMODEW> block = GetGlobalDevMode(kPrinter);
        EXPECT_TRUE(block.IsSuccess());
        EXPECT_EQ(block.Size(), int{sizeof settings});
        if (!block.IsSuccess() || block.Size() != int{sizeof settings}) return settings;
        std::memcpy(static_cast<void*>(&settings), &block[0], sizeof settings);
        EXPECT_TRUE(settings.IsValid());
        return settings;
    }

    static UnicodeString Value(const WCHAR* name) {
        return Mox::ReadRegistry(HKEY_LOCAL_MACHINE, kProductKey, name);
    }
    static void SetValue(const WCHAR* name, const UnicodeString& value) {
        EXPECT_TRUE(Mox::WriteRegistry(HKEY_LOCAL_MACHINE, kProductKey, name, value));
    }

  private:
    static void Count(void*, Mox::TLogMsg* message, Mox::TLogRecorder*, bool*) {
        if (message->level == 'X') ++errors_;
    }
    static inline int errors_ = 0;

    test::FreshHostRoot root_;
    test::CleanLogger logger_;
    test::TestPrinters printers_;
};

/// A stored number that every run changes. After the run it is the old or the new one, and the new
/// one when the caller was told so.
class Turns {
  public:
    int Stored() const { return stored_; }
    int Wanted() const { return stored_ % 90 + 1; }
    void Found(int value, bool told_stored) {
        EXPECT_TRUE(value == stored_ || value == Wanted()) << value << " is stored";
        EXPECT_TRUE(value == Wanted() || !told_stored) << "what was said to be stored is not";
        stored_ = value;
    }

  private:
    int stored_ = 1;
};

}  // namespace faults
