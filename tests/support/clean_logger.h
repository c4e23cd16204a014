// The process's logger in a known state for one test: `units` connected, no callbacks, no recorder.
// The end brings back what was there.
#pragma once

#include <windows.h>

#include "mox_log/logger.h"

namespace test {

class CleanLogger {
  public:
    explicit CleanLogger(int units = 1)
        : record_(Logger().recordProc),
          recorder_(Logger().recorder),
          res_string_(Logger().resStringProc),
          resources_(Logger().resStringContext) {
        units_before_ = Disconnect();
        Clear();
        for (int i = 0; i < units; ++i) Logger().Init();
    }
    ~CleanLogger() {
        Disconnect();
        Clear();
        for (int i = 0; i < units_before_; ++i) Logger().Init();
        Logger().recorder = recorder_;
        Logger().recordProc = record_;
        Logger().resStringContext = resources_;
        Logger().resStringProc = res_string_;
    }
    CleanLogger(const CleanLogger&) = delete;
    CleanLogger& operator=(const CleanLogger&) = delete;

    static Mox::TLogger& Logger() { return *Mox::GetLogger(); }

  private:
    static int Disconnect() {
        const int units = Logger().refCount;
        while (Logger().refCount > 0) Logger().Release();
        return units;
    }
    static void Clear() {
        Logger().recordProc = nullptr;
        Logger().recordContext = nullptr;
        Logger().formatProc = nullptr;
        Logger().formatContext = nullptr;
        Logger().resStringProc = nullptr;
        Logger().resStringContext = nullptr;
        Logger().recorder = nullptr;
    }

    Mox::TLogRecordProc record_;
    Mox::TLogRecorder* recorder_;
    Mox::TResStringProc res_string_;
    void* resources_;
    int units_before_ = 0;
};

}  // namespace test
