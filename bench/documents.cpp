#include "documents.h"

#include <cstdint>
#include <iterator>
#include <string_view>
#include <utility>

namespace bench {

namespace {

constexpr std::string_view kDeclaration =
    "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>";
constexpr std::string_view kLineBreak = "\r\n";

// A generator of our own, because the standard's distributions differ between libraries.
class Numbers {
  public:
    std::uint32_t Below(std::uint32_t bound) {
        state_ = state_ * 6364136223846793005u + 1442695040888963407u;
        return static_cast<std::uint32_t>((state_ >> 33) % bound);
    }

  private:
    std::uint64_t state_ = 20240229;
};

class Lines {
  public:
    Lines() : text_(kDeclaration) {}

    void Line(std::string_view content) {
        text_ += kLineBreak;
        text_.append(4 * depth_, ' ');
        text_ += content;
    }
    void Open(std::string_view name, std::string_view attributes = {}) {
        Line("<" + std::string(name) + std::string(attributes) + ">");
        ++depth_;
    }
    void Close(std::string_view name) {
        --depth_;
        Line("</" + std::string(name) + ">");
    }
    void Element(std::string_view name, std::string_view text) {
        const std::string tag(name);
        Line("<" + tag + ">" + std::string(text) + "</" + tag + ">");
    }
    std::string Take() { return std::move(text_); }

  private:
    std::string text_;
    std::size_t depth_ = 0;
};

// The settings of a printer; the choices of one are separated by blanks, none means a number.
struct Setting {
    const char* name;
    const char* choices;
};
constexpr Setting kPlainSettings[] = {
    {"dmFields", ""},
    {"dmOrientation", "DMORIENT_PORTRAIT DMORIENT_LANDSCAPE"},
    {"dmPaperSize", "DMPAPER_A4 DMPAPER_LETTER DMPAPER_A5 DMPAPER_LEGAL"},
    {"dmPaperLength", ""},
    {"dmPaperWidth", ""},
    {"dmScale", ""},
    {"dmCopies", ""},
    {"dmDefaultSource", ""},
    {"dmPrintQuality", "DMRES_HIGH DMRES_MEDIUM DMRES_LOW DMRES_DRAFT"},
    {"dmColor", ""},
    {"dmDuplex", ""},
    {"dmYResolution", ""},
    {"dmTTOption", ""},
    {"dmCollate", ""},
    {"dmFormName", "A4 Letter"},
    {"dmLogPixels", ""},
    {"dmBitsPerPel", ""},
    {"dmPelsWidth", ""},
    {"dmPelsHeight", ""},
    {"dmNup", ""},
    {"dmDisplayFrequency", ""},
    {"dmICMMethod", ""},
    {"dmICMIntent", ""},
    {"dmMediaType", ""},
    {"dmDitherType", ""},
    {"dmReserved1", ""},
    {"dmReserved2", ""},
    {"dmPanningWidth", ""},
    {"dmPanningHeight", ""},
};
struct SettingGroup {
    const char* name;
    Setting settings[12];
};
constexpr SettingGroup kGroups[] = {
    {"exDialog", {{"Mode", "MODE_FAX MODE_FILE"}}},
    {"exFax", {{"PaperSize", "DMPAPER_A4 DMPAPER_B4"}, {"Resolution", ""}}},
    {"exOut",
     {{"UseDocNameAsFileName", "0 1"},
      {"UseSerial", "0 1"},
      {"RememberLastDir", "0 1"},
      {"Directory", "C:\\Users\\anna\\Documents\\Faxes C:\\ProgramData\\Outgoing"},
      {"FileName", "fax.tif B&#252;ro.tif"}}},
    {"exRun", {{"Enabled", "0 1"}, {"Target", "&lt;JobDone&#32;app=&quot;qv_post.exe&quot;/&gt;"}}},
    {"exLayout",
     {{"CenterHorizontal", "0 1"},
      {"CenterVertical", "0 1"},
      {"DeleteEmptyPage", "0 1"},
      {"DeleteTrailedSpace", "0 1"},
      {"ShrinkIfLarge", "0 1"},
      {"GrowIfSmall", "0 1"}}},
    {"exIPO",
     {{"DitherMethod", "DITHER_NONE DITHER_DIFFUSION"},
      {"Active", "0 1"},
      {"Contrast", ""},
      {"Brightness", ""},
      {"CP0", ""},
      {"CP1", ""},
      {"CP2", ""},
      {"CP3", ""},
      {"CriticalZone", ""},
      {"VisibleZone", ""},
      {"ColorMixer", ""}}},
};

std::string ValueOf(const Setting& setting, Numbers& numbers) {
    std::string_view choices = setting.choices;
    if (choices.empty()) return std::to_string(numbers.Below(2400));
    std::uint32_t count = 1;
    for (const char c : choices) count += c == ' ' ? 1 : 0;
    for (std::uint32_t skip = numbers.Below(count); skip > 0; --skip) {
        choices.remove_prefix(choices.find(' ') + 1);
    }
    return std::string(choices.substr(0, choices.find(' ')));
}

void AddPrinter(Lines& out, int number, Numbers& numbers) {
    out.Open("printer");
    out.Element("name", "Vantrel Fax " + std::to_string(number));
    out.Element("port", "QVPORT" + std::to_string(number % 16) + ":");
    out.Open("devmode");
    for (const Setting& setting : kPlainSettings) {
        out.Element(setting.name, ValueOf(setting, numbers));
    }
    for (const SettingGroup& group : kGroups) {
        out.Open(group.name);
        for (const Setting& setting : group.settings) {
            if (setting.name != nullptr) out.Element(setting.name, ValueOf(setting, numbers));
        }
        out.Close(group.name);
    }
    out.Close("devmode");
    out.Close("printer");
}

constexpr std::string_view kWords[][8] = {
    {"printer", "cannot be opened", "the page", "is ready", "settings of", "no paper", "message",
     "failed: %s"},
    {"Drucker", "l\u00e4sst sich nicht \u00f6ffnen", "die Seite", "ist verf\u00fcgbar",
     "Einstellungen f\u00fcr", "kein Papier", "Gr\u00f6\u00dfe", "fehlgeschlagen: %s"},
    {"imprimante", "impossible \u00e0 ouvrir", "la page", "est pr\u00eate", "param\u00e8tres de",
     "pas de papier", "t\u00e9l\u00e9copie re\u00e7ue", "a \u00e9chou\u00e9 : %s"},
};
constexpr std::string_view kLanguages[] = {"en", "de", "fr"};

void AddText(Lines& out, int id, Numbers& numbers) {
    std::string element = "<d" + std::to_string(id);
    for (std::size_t language = 0; language < std::size(kLanguages); ++language) {
        element.append(" ").append(kLanguages[language]).append("=\"");
        for (std::uint32_t words = 2 + numbers.Below(5), i = 0; i < words; ++i) {
            if (i > 0) element += ' ';
            element += kWords[language][numbers.Below(8)];
        }
        if (numbers.Below(8) == 0) element += " &quot;%s&quot; &amp; %d";
        element += '"';
    }
    out.Line(element + "/>");
}

}  // namespace

std::string PrinterResponse(int printers) {
    Lines out;
    Numbers numbers;
    out.Open("response");
    for (int i = 1; i <= printers; ++i) AddPrinter(out, i, numbers);
    out.Close("response");
    return out.Take();
}

std::string ResourceFile(int strings) {
    constexpr int kPerDomain = 100;
    Lines out;
    Numbers numbers;
    out.Open("resources");
    out.Open("mox");
    for (int first = 0; first < strings; first += kPerDomain) {
        const std::string domain = "domain" + std::to_string(first / kPerDomain);
        out.Open(domain, " format=\"d%d\"");
        for (int id = 0; id < kPerDomain && first + id < strings; ++id) AddText(out, id, numbers);
        out.Close(domain);
    }
    out.Close("mox");
    out.Close("resources");
    return out.Take();
}

const std::string& SmallResponse() {
    static const std::string document = PrinterResponse(20);
    return document;
}

const std::string& LargeResponse() {
    static const std::string document = PrinterResponse(2000);
    return document;
}

const std::string& Resources() {
    static const std::string document = ResourceFile(5000);
    return document;
}

}  // namespace bench
