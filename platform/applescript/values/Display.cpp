#include "platform/applescript/values/Display.h"

#include "platform/applescript/values/Application.h"
#include "platform/applescript/values/Limits.h"
#include "platform/applescript/values/List.h"
#include "platform/applescript/values/Object.h"
#include "platform/applescript/values/Reference.h"
#include "platform/applescript/values/Text.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace mervo::applescript {

namespace {

constexpr std::size_t kLongestQuotation = 2000;
constexpr std::size_t kLongestForm = Limits::kDefaultBytes / 4;
constexpr int kDeepestSpecifier = 64;

std::string withPoint(std::string digits, std::size_t pointAt)
{
    if (digits.size() <= pointAt)
        digits.append(pointAt + 1 - digits.size(), '0');
    return digits.substr(0, pointAt) + "." + digits.substr(pointAt);
}

/// Writes one value, stopping early once `limit` bytes are there.
class Writer {
public:
    enum class Form { display, source };

    Writer(Form form, std::size_t limit)
        : isSource_(form == Form::source)
        , limit_(limit)
    {
    }

    void write(const Value& value);
    std::string take() { return std::move(out_); }
    bool isFull() const { return out_.size() > limit_; }

private:
    void writeText(std::string_view text);
    void writeItems(const List& list);
    void writeRecord(const Record& record);
    void writeObject(const Object& object);
    void writeLabel(Symbol label);

    bool isSource_;
    std::size_t limit_;
    std::string out_;
};

void Writer::writeText(std::string_view text)
{
    if (!isSource_) {
        out_ += text;
        return;
    }
    out_ += '"';
    for (const char c : text.substr(0, limit_)) {
        if (c == '"' || c == '\\')
            out_ += '\\';
        out_ += c;
    }
    out_ += '"';
}

void Writer::writeItems(const List& list)
{
    if (isSource_)
        out_ += '{';
    bool isFirst = true;
    for (std::size_t i = 0; i < list.size() && !isFull(); ++i) {
        // In display form nested lists lose their braces, and an empty one leaves no trace.
        const Value item = isSource_ ? list[i] : dereferenced(list[i]);
        if (!isSource_ && item.is(Kind::list) && item.asList().size() == 0)
            continue;
        if (!isFirst)
            out_ += ", ";
        isFirst = false;
        write(item);
    }
    if (isSource_)
        out_ += '}';
}

void Writer::writeLabel(Symbol label)
{
    bool isPlain = !label.spelling().empty();
    for (const char c : label.spelling())
        isPlain = isPlain && (std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == ' ');
    out_ += isPlain ? label.spelling() : "|" + label.spelling() + "|";
}

void Writer::writeRecord(const Record& record)
{
    if (isSource_)
        out_ += '{';
    bool isFirst = true;
    for (const Record::Field& field : record.fields()) {
        if (isFull())
            break;
        if (!isFirst)
            out_ += ", ";
        isFirst = false;
        writeLabel(field.label);
        out_ += ':';
        write(field.value);
    }
    if (isSource_)
        out_ += '}';
}

void Writer::writeObject(const Object& object)
{
    const Object* next = &object;
    Ref<Object> held;
    for (int depth = 0; next && depth < kDeepestSpecifier; ++depth) {
        const Designation designation = next->designation();
        if (designation.form == Designation::Form::application) {
            if (depth == 0) {
                out_ += isSource_ ? "application \"" + next->application().dictionary().applicationName() + "\""
                                  : "application " + next->application().dictionary().applicationName();
            }
            return;
        }
        if (depth > 0)
            out_ += " of ";
        out_ += designation.term;
        if (designation.form == Designation::Form::id)
            out_ += " id";
        if (designation.form != Designation::Form::property) {
            out_ += ' ';
            write(designation.key);
        }
        held = designation.container;
        next = held.get();
    }
}

void Writer::write(const Value& value)
{
    Limits::enter();
    Limits::step();
    if (isFull())
        return;
    switch (value.kind()) {
    case Kind::none:
        break;
    case Kind::missing:
        out_ += "missing value";
        break;
    case Kind::boolean:
        out_ += value.asBoolean() ? "true" : "false";
        break;
    case Kind::integer:
        out_ += std::to_string(value.asInteger());
        break;
    case Kind::real:
        out_ += realText(value.asReal());
        break;
    case Kind::text:
        writeText(value.view());
        break;
    case Kind::list:
        writeItems(value.asList());
        break;
    case Kind::record:
        writeRecord(value.asRecord());
        break;
    case Kind::date:
        out_ += isSource_ ? "date \"" + longDate(value.asDate()) + "\"" : "date " + longDate(value.asDate());
        break;
    case Kind::classTerm:
    case Kind::constant:
        out_ += value.asSymbol().spelling();
        break;
    case Kind::file:
        out_ += isSource_ ? "POSIX file " : "";
        writeText(value.view());
        break;
    case Kind::object:
        writeObject(value.asObject());
        break;
    case Kind::reference:
        if (isSource_) {
            out_ += value.asReference().specifier();
        } else {
            write(dereferenced(value));
        }
        break;
    case Kind::script:
        out_ += "«script»";
        break;
    case Kind::language:
        out_ += "AppleScript";
        break;
    case Kind::application:
        out_ += "application ";
        writeText(value.view());
        break;
    }
}

std::string written(const Value& value, Writer::Form form)
{
    Writer writer(form, kLongestForm);
    writer.write(value);
    if (writer.isFull())
        throw ScriptError::outOfMemory();
    return writer.take();
}

} // namespace

std::string realText(double value)
{
    if (!std::isfinite(value))
        return std::isnan(value) ? "NaN" : value < 0 ? "-INF" : "INF";
    char text[32];
    std::snprintf(text, sizeof text, "%.11e", std::fabs(value)); // d.ddddddddddde[+-]xx
    const std::string sign = std::signbit(value) ? "-" : "";
    std::string digits = text[0] + std::string(text + 2, 11);
    const int exponent = std::atoi(text + 14);
    digits.erase(digits.find_last_not_of('0') == std::string::npos ? 1 : digits.find_last_not_of('0') + 1);
    const bool isSmall = exponent < -3 || (exponent == -3 && digits == "1");
    if (value != 0 && (exponent >= 4 || isSmall))
        return sign + withPoint(digits, 1) + "E" + (exponent < 0 ? "-" : "+") + std::to_string(std::abs(exponent));
    if (exponent < 0)
        return sign + "0." + std::string(static_cast<std::size_t>(-exponent - 1), '0') + digits;
    return sign + withPoint(digits, static_cast<std::size_t>(exponent) + 1);
}

std::string displayForm(const Value& value)
{
    return written(value, Writer::Form::display);
}

std::string sourceForm(const Value& value)
{
    std::string text = written(value, Writer::Form::source);
    if (value.is(Kind::object) && value.asObject().designation().form != Designation::Form::application)
        text += " of application \"" + value.asObject().application().dictionary().applicationName() + "\"";
    return text;
}

std::string quoted(const Value& value)
{
    Writer writer(Writer::Form::source, kLongestQuotation);
    writer.write(value);
    const bool isCut = writer.isFull();
    std::string text = writer.take();
    if (!isCut)
        return text;
    std::size_t end = kLongestQuotation;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80)
        --end;
    return text.substr(0, end) + "…";
}

std::string specifierOf(const Object& object)
{
    Writer writer(Writer::Form::source, kLongestQuotation);
    writer.write(Value::object(Ref<Object>(const_cast<Object*>(&object))));
    return writer.take();
}

Symbol classOf(const Value& value)
{
    switch (value.kind()) {
    case Kind::none:
    case Kind::missing:
    case Kind::classTerm:
        return Symbol("class");
    case Kind::boolean:
        return Symbol("boolean");
    case Kind::integer:
        return Symbol("integer");
    case Kind::real:
        return Symbol("real");
    case Kind::text:
        return Symbol("text");
    case Kind::list:
        return Symbol("list");
    case Kind::record:
        return Symbol("record");
    case Kind::date:
        return Symbol("date");
    case Kind::constant:
        return Symbol("constant");
    case Kind::file:
        return Symbol("POSIX file");
    case Kind::object:
        return Symbol(value.asObject().objectClass().name);
    case Kind::reference:
        return classOf(dereferenced(value));
    case Kind::script:
    case Kind::language:
        return Symbol("script");
    case Kind::application:
        return Symbol("application");
    }
    return {};
}

} // namespace mervo::applescript
