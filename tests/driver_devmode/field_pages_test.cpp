// The pages that name settings agree with the rows of the settings.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "driver_devmode/field_table.h"
#include "driver_devmode/field_text.h"
#include "driver_devmode/qv_devmode.h"
#include "support/page_text.h"

namespace {

using driver_devmode::FieldKind;
using driver_devmode::TField;
using driver_devmode::TFieldInfo;
using test::Between;
using test::PageText;

std::string Ascii(const UnicodeString& text) {
    return test::Ascii(
        std::basic_string_view<WCHAR>(text.t_str(), static_cast<std::size_t>(text.Length())));
}

TField FieldOf(QV_DEVMODE& block, const TFieldInfo& row) {
    return {&row, reinterpret_cast<unsigned char*>(static_cast<DEVMODEW*>(&block)) + row.Offset};
}

std::vector<const TFieldInfo*> NamedRows() {
    std::vector<const TFieldInfo*> rows;
    for (const TFieldInfo& row : driver_devmode::DevModeFields())
        if (row.Kind != FieldKind::Gap) rows.push_back(&row);
    for (const TFieldInfo& row : driver_devmode::WrapperFields()) rows.push_back(&row);
    return rows;
}

std::string SchemaType(const TFieldInfo& row) {
    static const char* const kTypes[] = {"flag",   "int8",   "uint8",  "int16",    "uint16",
                                         "uint32", "text16", "name32", "xs:string"};
    const std::string type = kTypes[static_cast<std::size_t>(row.Kind)];
    if (row.IsText() || row.Count == 1) return type;
    return type + (row.Count == 2 ? "Pair" : "Triple");
}

// The names of a row's values as a simple type enumerates them.
std::string Enumeration(const TFieldInfo& row) {
    QV_DEVMODE block;
    const TField field = FieldOf(block, row);
    std::string names;
    for (int value = -128; value < 256; ++value) {
        StoreElement(field, 0, value);
        const std::string name = Ascii(ReadField(field));
        if (name.find_first_not_of("-0123456789") == std::string::npos) continue;
        names += "          <xs:enumeration value=\"" + name + "\"/>\n";
    }
    return names;
}

TEST(FieldPages, TheSchemaHasALineForEveryRow) {
    const std::string schema = PageText("schema/settings.xsd");
    std::map<std::string, std::ptrdiff_t> groups;
    for (const TFieldInfo* row : NamedRows()) {
        const std::string name = Ascii(row->Name);
        const std::size_t dot = name.find('.');
        const std::string group = dot == std::string::npos ? "settings" : name.substr(0, dot);
        const std::string body =
            Between(schema, "<xs:complexType name=\"" + group + "\">", "</xs:all>");
        const std::string type =
            Between(body, "<xs:element name=\"" + name.substr(dot + 1) + "\" type=\"",
                    "\" minOccurs=\"0\"/>");
        ++groups[group];
        if (row->Values == driver_devmode::ValueTable::None) {
            EXPECT_EQ(type, SchemaType(*row)) << "settings.xsd: " << name << " in " << group;
            continue;
        }
        const std::string simple =
            Between(schema, "<xs:simpleType name=\"" + type + "\">", "\n  </xs:simpleType>");
        EXPECT_EQ(Between(simple, "memberTypes=\"", "\""), SchemaType(*row))
            << "settings.xsd: " << name << " in " << group;
        EXPECT_EQ(Between(simple, "base=\"xs:token\">\n", "        </"), Enumeration(*row)) << name;
    }
    for (const auto& [group, rows] : groups) {
        const std::string body = Between(
            schema, "<xs:complexType name=\"" + group + "\">\n    <xs:all>\n", "    </xs:all>");
        const std::ptrdiff_t others = group == "settings" ? std::ssize(groups) - 1 : 0;
        EXPECT_EQ(std::ranges::count(body, '\n'), rows + others)
            << "settings.xsd: an element of no row in " << group;
    }
}

TEST(FieldPages, TheLayoutPageHasARowForEveryField) {
    const std::string page = PageText("formats/devmode.md");
    QV_DEVMODE block;
    for (const TFieldInfo& row : driver_devmode::DevModeFields()) {
        if (row.Kind == FieldKind::Gap) continue;
        const TField field = FieldOf(block, row);
        std::string fresh;
        if (row.IsText()) {
            fresh = '`' + Ascii(ReadField(field)) + '`';
        } else {
            for (int i = 0; i < row.Count; ++i)
                fresh += (i > 0 ? ", " : "") + std::to_string(LoadElement(field, i));
        }
        const std::string start = "\n| " + std::to_string(row.Offset) + " | " +
                                  std::to_string(row.Size * row.Count) + " | ";
        const std::string line = Between(page, start, "\n");
        EXPECT_NE(line.find('`' + Ascii(row.Name) + "` |"), std::string::npos)
            << "formats/devmode.md lacks" << start << "with `" << Ascii(row.Name) << '`';
        const std::string cell = Between(line, "| ", " |");
        const bool is_fresh =
            cell.starts_with(fresh) && (cell.size() == fresh.size() || cell[fresh.size()] == ' ' ||
                                        cell.compare(fresh.size(), 2, ", ") == 0);
        EXPECT_TRUE(is_fresh) << Ascii(row.Name) << " is " << fresh << " when fresh, not " << cell;
    }
}

TEST(FieldPages, TheCommandPageHasTheKeyOfEveryRowThatHasOne) {
    const std::string page = PageText("commands.md");
    for (const TFieldInfo* row : NamedRows()) {
        if (row->Key.Name == nullptr) continue;
        for (const UnicodeString& key :
             {UnicodeString(row->Key.Name), UnicodeString(row->Key.Name).LowerCase()}) {
            EXPECT_NE(page.find('`' + Ascii(key) + '`'), std::string::npos)
                << "commands.md lacks `" << Ascii(key) << '`';
        }
    }
}

}  // namespace
