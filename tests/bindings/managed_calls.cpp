// The calls that the C#, PowerShell and Python bindings make, without a binding: the same order,
// arguments and buffer sizes. Prints one line per step. The programs beside this one print the
// same.
//
//     managed_calls PRINTER      (plain ASCII)
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

#include "qv_rtl_c.h"

namespace {

using Wide = std::basic_string<QV_WCHAR>;

constexpr int kFirstLength = 4096;
// A character outside the Basic Multilingual Plane, one whose low byte is 0, an accent.
const Wide kFancy = {0xD83D, 0xDCE0, ' ', 0x100, ' ', 0xE9};
constexpr const char* kFancyUtf8 = "\xF0\x9F\x93\xA0 \xC4\x80 \xC3\xA9";

Wide operator""_w(const char* ascii, std::size_t length) {
    return Wide(ascii, ascii + length);
}

Wide FromAscii(const std::string& ascii) {
    return Wide(ascii.begin(), ascii.end());
}

struct Answer {
    int status;
    Wide text;
    std::string Summary() const {
        return std::to_string(status) + ' ' + std::to_string(text.size());
    }
};

// Asks again with more room while the answer may have been cut.
Answer Command(const Wide& line) {
    for (int length = kFirstLength;;) {
        Wide buffer(static_cast<std::size_t>(length) + 1, 0);
        const int status = DoCommandW(line.c_str(), buffer.data(), length);
        buffer.resize(buffer.find(QV_WCHAR{0}));
        const int held = static_cast<int>(buffer.size());
        if (status < 0 ? held < length : status <= length) return {status, buffer};
        length = std::max(status, length * 2);
    }
}

std::string Printed(const Answer& answer) {
    if (answer.status < 0) return answer.Summary();
    std::string line;
    for (const auto unit : answer.text) line += unit == '\t' ? '|' : static_cast<char>(unit);
    return line;
}

// Writes the request file, makes the call, reads the response.
std::string Request(const std::string& utf8) {
    std::ofstream("request.xml", std::ios::binary) << "\xEF\xBB\xBF" << utf8;
    DoXMLW("request.xml"_w.c_str(), "response.xml"_w.c_str());
    std::ifstream file("response.xml", std::ios::binary);
    const std::string response{std::istreambuf_iterator<char>(file), {}};
    file.close();
    std::remove("request.xml");
    std::remove("response.xml");
    return response;
}

std::string Update(const std::string& printer_utf8) {
    return Request("<update><printer><name>" + printer_utf8 +
                   "</name><devmode><dmCopies>3</dmCopies>"
                   "<exOut><UseSerial>False</UseSerial></exOut></devmode></printer></update>");
}

// What stands in `text` between `before` and the next character `end`.
std::string Between(const std::string& text, const std::string& before, char end) {
    const std::size_t at = text.find(before);
    if (at == std::string::npos) return "?";
    const std::size_t begin = at + before.size();
    return text.substr(begin, text.find(end, begin) - begin);
}

const char* SetDefaults(const Wide& printer) {
    const Wide none;
    const int set =
        SetQVDefaultSetting(printer.c_str(), 1, 0, 1, 0, kFancy.c_str(), "a.tif"_w.c_str(),
                            none.c_str(), none.c_str(), none.c_str(), none.c_str(), none.c_str());
    return set == 1 ? "set" : "refused";
}

void RunCommands(const Wide& printer) {
    const Wide get = "getdevmode\tprintername\t"_w;
    const Wide set = "setdevmode\tprintername\t"_w + printer;
    std::cout << Printed(Command("getorloprinters"_w)) << '\n';
    const Answer settings = Command(get + printer);
    std::cout << (settings.status < 0 ? settings.Summary()
                                      : std::string(1, static_cast<char>(settings.text[5])))
              << '\n';
    const Wide change = set + "\tmode\t1\tdefaultsavedir\t\""_w + kFancy + "\t\"\"\""_w;
    std::cout << Printed(Command(change)) << '\n';
    Wide unknown = set;
    for (int i = 1000; i < 1100; ++i) {
        unknown += FromAscii("\tnothing0" + std::to_string(i).substr(1)) + kFancy + "\t1"_w;
    }
    const Answer refused = Command(unknown);
    std::cout << (refused.status < 0 ? refused.status : static_cast<int>(refused.text.size()))
              << '\n';
    std::cout << Printed(Command(get + kFancy)) << '\n';
    std::cout << Printed(Command(get + Wide(4096, 'x'))) << '\n';
}

void RunRequests(const std::string& printer) {
    const std::string all = Request("<query><global/></query>");
    const bool answered = all.find("<response to=\"query\">") != std::string::npos;
    std::cout << (answered ? "answered" : all) << '\n';
    const std::string changed = Update(printer);
    std::cout << Between(changed, "<dmCopies>", '<') << ' ' << Between(changed, "<UseSerial>", '<')
              << '\n';
    std::cout << Between(Update(kFancyUtf8), "W32Code=\"", '"') << '\n';
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: managed_calls PRINTER\n");
        return 2;
    }
    const std::string printer = argv[1];
    RunCommands(FromAscii(printer));
    RunRequests(printer);
    std::cout << SetDefaults(FromAscii(printer)) << '\n' << SetDefaults(kFancy) << '\n';
    return 0;
}
