#include "mox_classes/text/log_line.h"

#include <algorithm>
#include <atomic>

#include "mox_classes/text/sysutils_paths.h"

namespace Mox {

namespace {
constexpr int kShownBytes = 100;
constexpr int kBytesPerGroup = 8;
}  // namespace

UnicodeString FormatLogLine(int level, const UnicodeString& source, int line,
                            const UnicodeString& text, const UnicodeString& dataLabel,
                            const void* data, int dataSize) {
    UnicodeString shown;
    shown.printf(TEXT("%c T%lu.S%d [%s,%d] %s"), level, GetCurrentThreadId(),
                 static_cast<int>(GetSessionId()), source, line, text);
    if (dataSize < 1) return shown;
    const int size = data == nullptr ? 0 : dataSize;
    UnicodeString dump = GetHexEncoded(data, std::min(size, kShownBytes));
    if (size > kShownBytes) dump += TEXT(" ...");
    shown.cat_printf(TEXT(" (+%s %dbytes %s)"), dataLabel, size, dump);
    return shown;
}

UnicodeString ODSLog(int level, UnicodeString source, int line, UnicodeString text,
                     UnicodeString dataLabel, void* data, int dataSize) {
    const UnicodeString shown = FormatLogLine(level, source, line, text, dataLabel, data, dataSize);
    OutputDebugStringW(shown.t_str());
    return shown;
}

// A process never changes its session, so the system is asked only until it has answered once.
DWORD GetSessionId() {
    constexpr DWORD kUnknown = 0xFFFFFFFF;
    static std::atomic<DWORD> last{kUnknown};
    DWORD session = last.load(std::memory_order_relaxed);
    if (session != kUnknown) return session;
    if (!ProcessIdToSessionId(GetCurrentProcessId(), &session)) session = kUnknown;
    last.store(session, std::memory_order_relaxed);
    return session;
}

UnicodeString GetHexEncoded(const void* data, int size) {
    if (data == nullptr || size < 1) return UnicodeString();
    static constexpr char kDigits[] = "0123456789ABCDEF";
    const auto* bytes = static_cast<const BYTE*>(data);
    UnicodeString text;
    text.SetLength(2LL * size + (size - 1) / kBytesPerGroup);
    WCHAR* out = text.data();
    for (int i = 0; i < size; ++i) {
        if (i > 0 && i % kBytesPerGroup == 0) *out++ = ' ';
        *out++ = static_cast<WCHAR>(kDigits[bytes[i] >> 4]);
        *out++ = static_cast<WCHAR>(kDigits[bytes[i] & 15]);
    }
    return text;
}

UnicodeString BuildNamespace(UnicodeString path) {
    const UnicodeString name = Sysutils::ExtractFileName(path);
    const int dot = name.LastDelimiter(TEXT("."));
    return dot == 0 ? name : name.SubString(1, dot - 1);
}

}  // namespace Mox
