// XML: parsing, saving and the memory of the tree, beside other parsers.
#include "documents.h"
#include "support.h"

#include <expat.h>
#include <libxml/parser.h>
#include <malloc.h>
#include <tinyxml2.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <pugixml.hpp>

#include "mox_classes/containers/memory_stream.h"
#include "xml/xml_doc.h"
#include "xml/xml_writer.h"

namespace {

using TDocument = const std::string& (*)();

int Size(const std::string& bytes) {
    return static_cast<int>(bytes.size());
}

bool Load(TXmlDoc& doc, const std::string& bytes) {
    doc.CodePage = System::kCodePageUtf8;
    return doc.Parse(bytes.data(), Size(bytes)) > 0;
}

// Neither parser changes the caller's bytes.
bool Load(pugi::xml_document& doc, const std::string& bytes) {
    return static_cast<bool>(
        doc.load_buffer(bytes.data(), bytes.size(), pugi::parse_default, pugi::encoding_utf8));
}

template <class Document>
void Parse(benchmark::State& state, TDocument document) {
    const std::string& bytes = document();
    for (auto _ : state) {
        Document doc;
        if (!Load(doc, bytes)) state.SkipWithError("not parsed");
    }
}

void ParseExpat(benchmark::State& state, TDocument document) {
    const std::string& bytes = document();
    for (auto _ : state) {
        XML_Parser parser = XML_ParserCreate("UTF-8");
        if (XML_Parse(parser, bytes.data(), Size(bytes), 1) != XML_STATUS_OK) {
            state.SkipWithError("not parsed");
        }
        XML_ParserFree(parser);
    }
}

void ParseLibxml2(benchmark::State& state, TDocument document) {
    const std::string& bytes = document();
    for (auto _ : state) {
        xmlDocPtr doc = xmlReadMemory(bytes.data(), Size(bytes), nullptr, "UTF-8", XML_PARSE_HUGE);
        if (doc == nullptr) state.SkipWithError("not parsed");
        xmlFreeDoc(doc);
    }
}

void ParseTinyxml2(benchmark::State& state, TDocument document) {
    const std::string& bytes = document();
    for (auto _ : state) {
        tinyxml2::XMLDocument doc;
        if (doc.Parse(bytes.data(), bytes.size()) != tinyxml2::XML_SUCCESS) {
            state.SkipWithError("not parsed");
        }
    }
}

void Save(benchmark::State& state, TDocument document) {
    TXmlDoc doc;
    if (!Load(doc, document())) state.SkipWithError("not parsed");
    doc.Indentation = TEXT("    ");
    doc.LineBreak = TEXT("\r\n");
    for (auto _ : state) {
        Classes::TMemoryStream stream;
        doc.SaveToStream(&stream);
        state.counters["saved_bytes"] = static_cast<double>(stream.GetSize());
    }
}

struct StringWriter : pugi::xml_writer {
    void write(const void* data, std::size_t size) override {
        text.append(static_cast<const char*>(data), size);
    }
    std::string text;
};

void SavePugixml(benchmark::State& state, TDocument document) {
    pugi::xml_document doc;
    if (!Load(doc, document())) state.SkipWithError("not parsed");
    for (auto _ : state) {
        StringWriter writer;
        doc.save(writer, "    ", pugi::format_indent, pugi::encoding_utf8);
        state.counters["saved_bytes"] = static_cast<double>(writer.text.size());
    }
}

// The memory that a parse leaves in use. A fresh process measures it, because the heaps of this one
// keep freed blocks.
constexpr char kAsked[] = "QV_BENCH_HELD";

long ResidentBytes() {
    long pages = 0;
    long resident = 0;
    long shared = 0;
    std::ifstream("/proc/self/statm") >> pages >> resident >> shared;
    return (resident - shared) * sysconf(_SC_PAGESIZE);
}

template <class Document>
void AnswerHeld(const std::string& bytes) {
    malloc_trim(0);
    const long before = ResidentBytes();
    Document doc;
    if (!Load(doc, bytes)) std::_Exit(1);
    std::printf("%ld\n", ResidentBytes() - before);
    std::fflush(stdout);
    std::_Exit(0);
}

const bool kNotAsked = [] {
    const char* asked = std::getenv(kAsked);
    if (asked == nullptr) return true;
    const std::string_view question = asked;
    const std::string& bytes =
        question.ends_with("large") ? bench::LargeResponse() : bench::Resources();
    if (question.starts_with("ours")) AnswerHeld<TXmlDoc>(bytes);
    AnswerHeld<pugi::xml_document>(bytes);
    return false;
}();

void Held(benchmark::State& state, const char* question) {
    const std::string program = std::filesystem::read_symlink("/proc/self/exe");
    const std::string command = std::string(kAsked) + "='" + question + "' '" + program + "'";
    for (auto _ : state) {
        long bytes = 0;
        FILE* answer = popen(command.c_str(), "r");
        if (answer == nullptr || std::fscanf(answer, "%ld", &bytes) != 1) {
            state.SkipWithError("no answer");
        }
        if (answer != nullptr) pclose(answer);
        state.counters["held_bytes"] = static_cast<double>(bytes);
    }
}

void LoadEvent(benchmark::State& state) {
    const UnicodeString text(
        TEXT("<JobDone app=\"C:\\Program Files\\Vantrel\\qv_post.exe\" "
             "cmd=\"{spoolfile} {docname}\"/>"));
    for (auto _ : state) {
        TXmlDoc doc;
        if (!doc.LoadFromString(text, TEXT("events"))) state.SkipWithError("not parsed");
    }
}

void SaveEvent(benchmark::State& state) {
    TXmlNode node;
    node.FName = TEXT("JobDone");
    node.AddAttribute(TEXT("app"), TEXT("C:\\Program Files\\Vantrel\\qv_post.exe"));
    node.AddAttribute(TEXT("cmd"), TEXT("{spoolfile} {docname}"));
    for (auto _ : state) {
        TXmlFormatter format;
        benchmark::DoNotOptimize(node.SaveToString(format));
    }
}

bool Registered(const std::string& name, TDocument document) {
    const auto add = [&](const char* row, const char* side, auto run) {
        benchmark::RegisterBenchmark(("xml/" + (row + ("_" + name)) + "/" + side).c_str(), run,
                                     document);
    };
    add("parse", "ours", Parse<TXmlDoc>);
    add("parse", "pugixml", Parse<pugi::xml_document>);
    add("parse", "expat", ParseExpat);
    add("parse", "libxml2", ParseLibxml2);
    add("parse", "tinyxml2", ParseTinyxml2);
    add("save", "ours", Save);
    add("save", "pugixml", SavePugixml);
    return true;
}

[[maybe_unused]] const bool kRegistered = Registered("small", bench::SmallResponse) &&
                                          Registered("large", bench::LargeResponse) &&
                                          Registered("resources", bench::Resources);

BENCHMARK_CAPTURE(Held, ours_large, "ours large")->Name("xml/held_large/ours")->Iterations(1);
BENCHMARK_CAPTURE(Held, pugixml_large, "pugixml large")
    ->Name("xml/held_large/pugixml")
    ->Iterations(1);
BENCHMARK_CAPTURE(Held, ours_resources, "ours resources")
    ->Name("xml/held_resources/ours")
    ->Iterations(1);
BENCHMARK_CAPTURE(Held, pugixml_resources, "pugixml resources")
    ->Name("xml/held_resources/pugixml")
    ->Iterations(1);
BENCHMARK(LoadEvent)->Name("xml/event_load/ours");
BENCHMARK(SaveEvent)->Name("xml/event_save/ours");

}  // namespace
