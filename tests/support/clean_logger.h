// The process's logger in a known state for one test: `units` connected, no callbacks, no recorder.
// The end brings back what was there.
#pragma once

#include <windows.h>

#include <utility>

#include "mox_log/logger.h"

namespace test {

class CleanLogger {
  public:
    explicit CleanLogger(int units = 1) : units_before_(Change(units)) {}
    ~CleanLogger() { Change(units_before_); }
    CleanLogger(const CleanLogger&) = delete;
    CleanLogger& operator=(const CleanLogger&) = delete;

    static Mox::TLogger& Logger() { return *Mox::GetLogger(); }

  private:
    // Callbacks and recorder change places with those kept here; the result is the number of units
    // that were connected.
    int Change(int units) {
        Mox::TLogger& logger = Logger();
        const int before = logger.refCount;
        while (logger.refCount > 0) logger.Release();
        std::swap(record_, logger.recordProc);
        std::swap(record_context_, logger.recordContext);
        std::swap(format_, logger.formatProc);
        std::swap(format_context_, logger.formatContext);
        std::swap(res_string_, logger.resStringProc);
        std::swap(resources_, logger.resStringContext);
        std::swap(recorder_, logger.recorder);
        for (int i = 0; i < units; ++i) logger.Init();
        return before;
    }

    Mox::TLogRecordProc record_ = nullptr;
    Mox::TLogFormatProc format_ = nullptr;
    Mox::TResStringProc res_string_ = nullptr;
    void *record_context_ = nullptr, *format_context_ = nullptr, *resources_ = nullptr;
    Mox::TLogRecorder* recorder_ = nullptr;
    int units_before_;
};

}  // namespace test
