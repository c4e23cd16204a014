// Calls that fail on demand. The fault programs define the names of the host's calls, of the C
// library's calls and of the allocation functions. A program's own definitions come before those of
// its libraries. So every call of libqv_rtl.so and libqv_win32.so arrives here first. It goes on to
// the real function unless it has to fail. The libraries hold nothing of this.
#pragma once

#include <span>
#include <string>

namespace faults {

/// Which calls count: the library's calls of the host, the system calls below, or allocations.
enum class Kind { Host, System, Memory };
const char* KindText(Kind kind);

/// What a failing call answers; its code becomes the last error, errno, or the result itself.
enum class Answer { Zero, Ones, Status, Errno, NullErrno };

/// How a transfer that succeeds moves less than it was asked to, in place of a code.
enum Short : int { kHalf = -1, kOneByte = -2, kAllButOne = -3, kNothing = -4 };

/// One function that can fail: a row of a table in host_calls.cpp or system_calls.cpp.
struct Site {
    const char* name;
    Kind kind;
    Answer answer;
    std::span<const int> codes;
    bool releases = false;  // does its work even when it reports a failure
    int calls = 0;          // counted while a plan is in force
    Site* next = nullptr;
    bool listed = false;
};

/// Which call fails: the `nth` call of `site`, or of any function of `kind` without a site.
struct Plan {
    Kind kind = Kind::Host;
    const Site* site = nullptr;
    int nth = 0;             // 0: none, calls are only counted
    bool and_later = false;  // all later calls fail too
    std::size_t choice = 0;  // index of the code in `site`

    std::string Text() const;
};

/// Puts a plan in force for the calling thread, for one run at a time.
class Armed {
  public:
    explicit Armed(const Plan& plan);
    ~Armed();
    Armed(const Armed&) = delete;
    Armed& operator=(const Armed&) = delete;
};

/// Ends the plan of the calling thread. For a signal handler that reports the end of the program.
void Disarm();
/// Of the last run: whether a call failed, how many calls were counted.
bool WasHit();
int CallsSeen();
/// The functions that have been called under a plan, and their counts of the last run.
Site* FirstSite();

/// Blocks of operator new and of the process heap that are in use now, by all threads.
long BlocksInUse();

/// For the functions themselves. Verdict: no failure, a code, or a Short.
constexpr int kGoOn = 0;
int Verdict(Site& site);
/// Host calls that a host call makes do not count.
class InsideHost {
  public:
    explicit InsideHost(const Site& site);
    ~InsideHost();
    InsideHost(const InsideHost&) = delete;
    InsideHost& operator=(const InsideHost&) = delete;

  private:
    bool entered_;
};

}  // namespace faults
