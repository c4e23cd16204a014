// exit: logs the texts "ORDER:1" to "ORDER:100" and ends in the way that ORDER names,
// while the library is loaded, its units are connected and threads may be inside it. Without an
// ORDER it lists them.
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>

#include "driver_global/startup.h"
#include "mox_classes/text/sysutils_numbers.h"
#include "mox_log/logger.h"
#include "qv_rtl_c.h"
#include "verbs.h"

namespace {

const char* order = "";

void Log(const UnicodeString& text) {
    Mox::GetLogger()->Log('i', TEXT("exit"), __LINE__, text, UnicodeString(), nullptr, 0);
}

// Uses the library when the program's own objects are destroyed.
struct TLateUser {
    ~TLateUser() {
        if (*order != '\0') Use();
    }
    static void Use() {
        WCHAR result[100];
        DoCommandW(TEXT("getdevmode\tprintername\tlate"), result, 99);
        if (std::strcmp(order, "static") == 0) Log(TEXT("static:late"));
    }
} late_user;

std::atomic<int> inside{0};

// Threads that never stop; they are inside the library when the process ends.
void Occupy(int threads) {
    for (int t = 0; t < threads; ++t) {
        std::thread([t] {
            ++inside;
            for (int i = 0;; ++i) {
                if (t % 2 == 0) {
                    Log(Sysutils::UnicodePrintf(TEXT("busy %d"), i));
                } else {
                    WCHAR result[100];
                    DoCommandW(TEXT("getorloprinters"), result, 99);
                    DoCommandW(TEXT("getdevmode\tprintername\tbusy"), result, 99);
                }
            }
        }).detach();
    }
    while (inside < threads) std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
}

void ExitFromThread() {
    std::thread([] { std::exit(0); }).join();
}

struct TOrder {
    const char* name;
    void (*end)();
};

const TOrder kOrders[] = {
    {"return", [] {}},
    {"static", [] {}},
    {"exit", [] { std::exit(0); }},
    {"thread", ExitFromThread},
    {"atexit", [] { std::atexit(TLateUser::Use); }},
    {"busy", [] { Occupy(4); }},
    {"busy_thread",
     [] {
         Occupy(4);
         ExitFromThread();
     }},
    {"busy_exits",
     [] {
         Occupy(2);
         std::thread([] { std::exit(0); }).detach();
         std::this_thread::sleep_for(std::chrono::seconds(60));
     }},
    {"open_units",
     [] {
         for (const WCHAR* unit : {TEXT("one"), TEXT("two"), TEXT("three")}) {
             QVInitApp(unit, UnicodeString(), UnicodeString());
         }
         QVUninitApp(TEXT("two"));
     }},
    {"closed_units",
     [] {
         QVInitApp(TEXT("one"), UnicodeString(), UnicodeString());
         QVInitDriver(TEXT("two"), UnicodeString(), UnicodeString());
         QVUninitApp(TEXT("one"));
         QVUninitDriver(TEXT("two"));
     }},
    {"too_many_ends",
     [] {
         for (int i = 0; i < 3; ++i) QVUninitApp(TEXT("qv_rtl"));
         Log(TEXT("nobody listens"));
     }},
};

}  // namespace

int stress::End(const TArguments& arguments) {
    for (const TOrder& known : kOrders) {
        if (arguments.empty()) {
            std::puts(known.name);
        } else if (arguments[0] == known.name) {
            order = known.name;
            for (int i = 1; i <= 100; ++i)
                Log(Sysutils::UnicodePrintf(TEXT("%s:%d"), UnicodeString(order), i));
            known.end();
            return 0;
        }
    }
    return arguments.empty() ? 0 : 2;
}
