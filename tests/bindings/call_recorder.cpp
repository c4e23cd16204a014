// Stands before the library: writes each call of the command interfaces with its arguments to the
// file that QV_CALLS names, and makes it in the library that QV_REAL_LIBRARY names. Two programs
// that leave the same file made the same calls.
#include <dlfcn.h>

#include <cstdlib>
#include <fstream>
#include <iomanip>
#include <iterator>
#include <string>
#include <string_view>

#include "qv_rtl_c.h"

namespace {

template <class F>
F* Real(const char* name) {
    void* const library = dlopen(std::getenv("QV_REAL_LIBRARY"), RTLD_NOW | RTLD_LOCAL);
    void* const call = library == nullptr ? nullptr : dlsym(library, name);
    if (call == nullptr) std::abort();
    return reinterpret_cast<F*>(call);
}

// One line of the file.
class Line {
  public:
    explicit Line(const char* call) : file_(std::getenv("QV_CALLS"), std::ios::app) {
        file_ << call;
        if (!file_) std::abort();
    }
    ~Line() { file_ << '\n'; }
    Line(const Line&) = delete;
    Line& operator=(const Line&) = delete;

    Line& operator<<(std::u16string_view text) {
        file_ << " '";
        for (const char16_t unit : text) {
            if (unit >= 0x20 && unit < 0x7F) {
                file_ << static_cast<char>(unit);
            } else {
                file_ << "\\" << std::hex << std::setw(4) << std::setfill('0')
                      << static_cast<unsigned>(unit) << std::dec;
            }
        }
        file_ << '\'';
        return *this;
    }
    Line& operator<<(int number) {
        file_ << ' ' << number;
        return *this;
    }
    Line& Content(std::u16string_view name) {
        std::ifstream content(std::string(name.begin(), name.end()), std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(content), {}};
        file_ << ' ' << bytes;
        return *this;
    }

  private:
    std::ofstream file_;
};

// Folders differ from program to program.
std::u16string_view FilePart(std::u16string_view name) {
    return name.substr(name.rfind(u'/') + 1);
}

}  // namespace

// Room for the text and its terminator is the caller's duty.
QV_C_API int DoCommandW(const QV_WCHAR* command, QV_WCHAR* buffer, int length) {
    const int status = Real<decltype(DoCommandW)>("DoCommandW")(command, buffer, length);
    Line("DoCommandW") << command << length << status;
    return status;
}

QV_C_API int DoXMLW(const QV_WCHAR* request, const QV_WCHAR* response) {
    (Line("DoXMLW") << FilePart(request) << FilePart(response)).Content(request);
    return Real<decltype(DoXMLW)>("DoXMLW")(request, response);
}

QV_C_API int SetQVDefaultSetting(const QV_WCHAR* printer, unsigned char mode, unsigned char run,
                                 unsigned char serial, unsigned char document,
                                 const QV_WCHAR* directory, const QV_WCHAR* file_name,
                                 const QV_WCHAR* program, const QV_WCHAR* parameters,
                                 const QV_WCHAR* message, const QV_WCHAR* window_class,
                                 const QV_WCHAR* format) {
    Line("SetQVDefaultSetting") << printer << mode << run << serial << document << directory
                                << file_name << program << parameters << message << window_class
                                << format;
    return Real<decltype(SetQVDefaultSetting)>("SetQVDefaultSetting")(
        printer, mode, run, serial, document, directory, file_name, program, parameters, message,
        window_class, format);
}
