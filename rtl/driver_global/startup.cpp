#include "driver_global/startup.h"

#include <atomic>
#include <memory>
#include <optional>

#include "driver_devmode/qv_devmode.h"
#include "driver_global/installation.h"
#include "log_file/log_recorder.h"
#include "mox_classes/text/log_here.h"
#include "mox_classes/text/sysutils.h"
#include "mox_log/logger.h"
#include "mox_log/wow64.h"
#include "xml/xml_doc.h"
#include "xml/xml_resource.h"

namespace {

constexpr DWORD kLogFileLimit = 0x500000;

// When the file is damaged, the part in front of the damage is used.
void ReadResources() {
    TXmlDoc* document = GetXmlRes();
    if (document == nullptr) return;
    try {
        document->ReadFile();
    } catch (const UnicodeString& message) {
        Mox::LogHere('*', UnicodeString(TEXT("Resource file: ")) + message);
    }
    document->CloseFile();
    // Any thread may open a catalogue.
    document->FRoot->BuildIndices();
}

void TakeAvailableFields() {
    TXmlDoc* document = GetXmlRes();
    if (document == nullptr) return;
    const TXmlNode* fields = document->FRoot->Find(TEXT("devmode\\fields"), System::kCodePageUtf8);
    if (fields == nullptr) return;
    QV_DEVMODE_AvailableFields =
        static_cast<std::uint32_t>(Sysutils::StrToIntDef(fields->FValue, int{kSupportedFields}));
}

// Installs `recorder` and returns the one that was installed before. A thread that is about to use
// the old one uses the new one instead.
std::unique_ptr<Mox::TLogRecorder> ExchangeRecorder(std::unique_ptr<Mox::TLogRecorder> recorder) {
    Mox::TLogger& logger = *Mox::GetLogger();
    if (recorder == nullptr) Mox::LeaveLogSoon();
    logger.Lock();
    std::unique_ptr<Mox::TLogRecorder> replaced(logger.recorder);
    if (recorder != nullptr) {
        Mox::SetLogRecorder(recorder.release());
    } else {
        Mox::ClearLogRecorder(replaced.get());
    }
    logger.Unlock();
    return replaced;
}

// Asks the program, as it would be asked for any optional entry point.
bool ProgramOnlyLooks() {
    using TLooksOnly = int (*)();
    const auto looks_only = reinterpret_cast<TLooksOnly>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(nullptr), "QVLooksOnly")));
    return looks_only != nullptr && looks_only() != 0;
}

DWORD InstallRecorder(const UnicodeString& log_file) {
    if (log_file == kLogFileOff) return ERROR_NOT_READY;
    auto recorder = std::make_unique<Mox::TLogRecorder>();
    if (!recorder->Open(log_file, kLogFileLimit)) return recorder->OpenError();
    ExchangeRecorder(std::move(recorder));
    return NO_ERROR;
}

void Identify(const UnicodeString& module_name) {
    UnicodeString text;
    Mox::LogHere('i', text.sprintf(TEXT("OS Version: %s"), GetOSInfo()));
    Mox::LogHere('i', text.sprintf(TEXT("'%s [%s%s]' initiated the log system. "), module_name,
                                   TEXT("AMD64"), IsWow64() ? TEXT("(WOW64)") : TEXT("")));
}

// Runs `step` and ignores that it runs out of memory. The next steps still run, so that each start
// of a unit has its end.
template <class Step>
void AsFarAsPossible(const Step& step) noexcept {
    try {
        step();
    } catch (...) {
        OutputDebugStringW(TEXT("[##qv_rtl] a step of a unit's start or end failed"));
    }
}

}  // namespace

void QVInitApp(const UnicodeString& moduleName, const UnicodeString& resourceFile,
               const UnicodeString& language) {
    Mox::GetLogger()->Init();
    std::optional<UnicodeString> log_file;
    AsFarAsPossible([&] {
        if (!ProgramOnlyLooks()) log_file = GetPrinterLogFile();
    });
    AsFarAsPossible([&] {
        InitXmlRes(resourceFile.Length() > 0 ? resourceFile : GetInstalledResourceFile(),
                   kFallbackResourceFile);
        SetLanguage(language.Length() > 0 ? language : GetPrinterLanguage());
        ReadResources();
        TakeAvailableFields();
    });
    AsFarAsPossible([&] {
        if (log_file) InstallRecorder(*log_file);
    });
    AsFarAsPossible([&] { Identify(moduleName); });
}

void QVUninitApp(const UnicodeString& /*moduleName*/) {
    ExchangeRecorder(nullptr);
    AsFarAsPossible([] { UninitXmlRes(); });
    Mox::GetLogger()->Release();
}

void QVInitDriver(const UnicodeString& moduleName, const UnicodeString& resourceFile,
                  const UnicodeString& language) {
    QVInitApp(moduleName, resourceFile, language);
}

void QVUninitDriver(const UnicodeString& moduleName) {
    QVUninitApp(moduleName);
}

DWORD InstallLogRecorder() {
    Mox::TLogger& logger = *Mox::GetLogger();
    if (std::atomic_ref(logger.recorder).load() != nullptr) return NO_ERROR;
    // Without a unit the logger writes nothing, and nobody would take the recorder out again.
    if (std::atomic_ref(logger.refCount).load() < 1) return ERROR_NOT_READY;
    return InstallRecorder(GetPrinterLogFile());
}
