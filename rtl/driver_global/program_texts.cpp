#include "driver_global/program_texts.h"

#include <algorithm>
#include <vector>

#include "driver_global/argv_split.h"
#include "mox_classes/format/template_string.h"
#include "mox_classes/text/sysutils.h"

namespace driver_global {

namespace {

TUnits UnitsOf(const UnicodeString& text) {
    return TUnits(text.t_str(), static_cast<std::size_t>(text.Length()));
}

UnicodeString StringOf(const TText& text) {
    return UnicodeString(text.data(), static_cast<long long>(text.size()));
}

// The value of one field.
struct TValue {
    TText quoted;  // as QVFillField gives it
    TText plain;
};

// Undoes the quoting of QVFillField: a value that holds a quote is quoted as a whole, with each
// quote doubled.
TText Unquoted(TUnits text) {
    if (!text.starts_with('"')) return TText(text);
    TText plain;
    for (std::size_t i = 1; i + 1 < text.size(); ++i) {
        plain += text[i];
        if (text[i] == '"') ++i;
    }
    return plain;
}

TText WithoutQuotes(TText text) {
    std::erase(text, WCHAR{'"'});
    return text;
}

// A template with one mark in the place of each value. Changes to the text then apply only to the
// template's own part.
class TMarkedText {
  public:
    TMarkedText(const UnicodeString& text, TFillTagsInfo& info, bool without_quotes) : info_(info) {
        const UnicodeString pattern = TemplateString(text, QVFillField, &info);
        // The mark must be a unit that neither the template nor an environment variable holds.
        for (mark_ = kFirstMark; mark_ <= kLastMark; ++mark_) {
            if (UnitsOf(pattern).find(mark_) != TUnits::npos) continue;
            values_.clear();
            TText filled(UnitsOf(TemplateStringFormat(pattern, MarkField, this)));
            if (without_quotes) filled = WithoutQuotes(std::move(filled));
            text_ = Sysutils::Trim(Sysutils::GetEnvExpanded(StringOf(filled)));
            const auto marks = std::count(UnitsOf(text_).begin(), UnitsOf(text_).end(), mark_);
            if (marks == static_cast<std::ptrdiff_t>(values_.size())) return;
        }
        values_.clear();
        text_ = UnicodeString();
    }
    TMarkedText(const TMarkedText&) = delete;
    TMarkedText& operator=(const TMarkedText&) = delete;

    TUnits Text() const { return UnitsOf(text_); }
    const std::vector<TValue>& Values() const { return values_; }
    bool HasMark(TUnits part) const { return part.find(mark_) != TUnits::npos; }
    // Puts the values into `part`, in place of its marks. The first mark gets the value with number
    // `next`.
    TText Replaced(TUnits part, std::size_t next, TText TValue::*form) const {
        TText result;
        for (const WCHAR unit : part) {
            if (unit == mark_ && next < values_.size()) {
                result += values_[next++].*form;
            } else {
                result += unit;
            }
        }
        return result;
    }
    std::size_t Marks(TUnits part) const {
        return static_cast<std::size_t>(std::count(part.begin(), part.end(), mark_));
    }

  private:
    // Units for private use.
    static constexpr WCHAR kFirstMark = 0xE000;
    static constexpr WCHAR kLastMark = 0xF8FF;

    static bool MarkField(const UnicodeString& name, const UnicodeString& spec, UnicodeString& out,
                          void* context) {
        auto& self = *static_cast<TMarkedText*>(context);
        UnicodeString text;
        if (!QVFillField(name, spec, text, &self.info_)) return false;
        self.values_.push_back({TText(UnitsOf(text)), Unquoted(UnitsOf(text))});
        out = UnicodeString(self.mark_);
        return true;
    }

    TFillTagsInfo& info_;
    WCHAR mark_ = kFirstMark;
    UnicodeString text_;
    std::vector<TValue> values_;
};

bool HasControlUnit(TUnits text) {
    return std::any_of(text.begin(), text.end(),
                       [](WCHAR unit) { return unit < 0x20 || unit == 0x7F; });
}

// Whether a program gets exactly `value` for the argument `text`, by both rules, and still gets an
// argument that follows.
bool ReadsAs(const TText& text, const TText& value) {
    const TText line = text + TEXT(" x");
    return std::ranges::all_of(
        std::initializer_list<TQuoteRule>{TQuoteRule::Program, TQuoteRule::Shell},
        [&](TQuoteRule rule) {
            const std::vector<TArgument> arguments = SplitArguments(line, rule);
            return arguments.size() == 2 && arguments[0].value == value &&
                   arguments[1].value == TEXT("x");
        });
}

TText FilledArgument(const TMarkedText& marked, TUnits part, const TArgument& argument,
                     std::size_t next) {
    const TText value = marked.Replaced(argument.value, next, &TValue::plain);
    TText text = marked.Replaced(part, next, &TValue::quoted);
    return !HasControlUnit(value) && ReadsAs(text, value) ? text : QuotedArgument(value);
}

}  // namespace

UnicodeString FilledPath(const UnicodeString& text, TFillTagsInfo& info) {
    const TMarkedText marked(text, info, true);
    return Sysutils::Trim(
        StringOf(WithoutQuotes(marked.Replaced(marked.Text(), 0, &TValue::plain))));
}

UnicodeString FilledParameters(const UnicodeString& text, TFillTagsInfo& info) {
    const TMarkedText marked(text, info, false);
    const TUnits units = marked.Text();
    TText result;
    std::size_t copied = 0;
    std::size_t next = 0;
    for (const TArgument& argument : SplitArguments(units, TQuoteRule::Program)) {
        const TUnits part = units.substr(argument.begin, argument.end - argument.begin);
        result += units.substr(copied, argument.begin - copied);
        result += marked.HasMark(part) ? FilledArgument(marked, part, argument, next) : TText(part);
        next += marked.Marks(part);
        copied = argument.end;
    }
    return StringOf(result);
}

bool HoldsCommandUnits(const UnicodeString& text, TFillTagsInfo& info) {
    const TMarkedText marked(text, info, false);
    return std::ranges::any_of(marked.Values(), [](const TValue& value) {
        return HasControlUnit(value.plain) ||
               value.plain.find_first_of(TEXT("\"%!&|<>^()")) != TText::npos;
    });
}

}  // namespace driver_global
