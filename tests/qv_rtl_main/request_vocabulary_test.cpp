// The schema and the page of requests agree with the table of elements.
#include "qv_rtl_main/request_vocabulary.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "support/page_text.h"

namespace {

using request::TContent;
using request::TElement;
using test::Ascii;
using test::Between;

const std::string kElement = "<xs:element name=\"";

std::ptrdiff_t Times(const std::string& text, const std::string& part) {
    std::ptrdiff_t times = 0;
    for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; ++at) ++times;
    return times;
}

// The type of an element as the schema defines it: named for those below the roots.
std::string TypeOf(const std::string& schema, const TElement& element) {
    const std::string name = Ascii(element.Name());
    if (element.Parent().empty())
        return Between(schema, kElement + name + "\">\n", "</xs:complexType>");
    const auto* parent = std::ranges::find(request::kElements, element.Parent(), &TElement::path);
    const std::string type = Between(TypeOf(schema, *parent), kElement + name + "\" type=\"", "\"");
    if (type.starts_with("xs:") || type == "settings") return type;
    const std::string body =
        Between(schema, "<xs:complexType name=\"" + type + "\">\n", "</xs:complexType>");
    return body.empty() && schema.find("name=\"" + type + "\"/>") != std::string::npos ? "nothing"
                                                                                       : body;
}

TEST(RequestVocabulary, TheSchemaTakesTheElementsOfTheTable) {
    const std::string schema = test::PageText("schema/request.xsd");
    for (const TElement& element : request::kElements) {
        const std::string path = Ascii(element.path);
        const std::string type = TypeOf(schema, element);
        const auto is_child = [&](const TElement& e) { return e.Parent() == element.path; };
        const auto is_optional = [&](const TElement& e) {
            return is_child(e) && e.need == request::TNeed::Optional;
        };
        switch (element.content) {
            case TContent::Text:
                EXPECT_EQ(type, "xs:string") << path;
                break;
            case TContent::Fields:
                EXPECT_EQ(type, "settings") << path;
                break;
            case TContent::AnyTexts:
                EXPECT_NE(type.find("<xs:any "), std::string::npos) << path << ":\n" << type;
                break;
            default:
                EXPECT_FALSE(type.empty()) << "request.xsd lacks " << path;
                EXPECT_EQ(Times(type, kElement),
                          std::ranges::count_if(request::kElements, is_child))
                    << path << ":\n"
                    << type;
                EXPECT_EQ(Times(type, element.content == TContent::Repeated
                                          ? "<xs:choice minOccurs=\"0\" maxOccurs=\"unbounded\">"
                                          : " minOccurs=\"0\"/>"),
                          element.content == TContent::Repeated
                              ? 1
                              : std::ranges::count_if(request::kElements, is_optional))
                    << path << ":\n"
                    << type;
        }
    }
}

TEST(RequestVocabulary, TheSchemaKnowsTheAttributesAndEncodings) {
    const std::string schema = test::PageText("schema/request.xsd");
    const std::string group = Between(schema, "<xs:attributeGroup name=", "</xs:attributeGroup>");
    EXPECT_EQ(Times(group, "<xs:attribute name="), std::ssize(request::kRootAttributes));
    for (const request::TView name : request::kRootAttributes)
        EXPECT_EQ(Times(group, "<xs:attribute name=\"" + Ascii(name) + '"'), 1) << Ascii(name);
    EXPECT_EQ(Times(group, "<xs:enumeration "), std::ssize(request::kEncodings) + 1);
    for (const request::TView name : request::kEncodings)
        EXPECT_EQ(Times(group, "<xs:enumeration value=\"" + Ascii(name) + '"'), 1) << Ascii(name);
}

TEST(RequestVocabulary, ThePageHasARowForEveryElementBelowTheRoots) {
    const std::string page = test::PageText("xml.md");
    for (const TElement& element : request::kElements) {
        const std::string path = Ascii(element.path);
        const std::string root = path.substr(0, path.find('/'));
        if (path == root) continue;
        const std::string section = Between(page, "\n### " + root + '\n', "\n#");
        const std::string below = path.substr(root.size() + 1);
        const std::size_t slash = below.find('/');
        const std::string row = Between(section, "\n| `" + below.substr(0, slash) + "` |", "\n");
        EXPECT_FALSE(row.empty()) << "xml.md, " << root << ": no row for " << below;
        if (slash != std::string::npos) {
            EXPECT_NE(row.find('`' + below.substr(slash + 1) + '`'), std::string::npos)
                << "xml.md, " << root << ": " << below;
        }
    }
}

}  // namespace
