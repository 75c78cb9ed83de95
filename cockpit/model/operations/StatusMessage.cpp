#include "cockpit/model/operations/StatusMessage.h"

#include "cockpit/model/shown/ShownText.h"
#include "core/foundation/Text.h"

#include <string_view>

namespace mervo {

namespace {

/// What stands before the text, with its blank.
std::string_view signOf(StatusMessage::Kind kind)
{
    switch (kind) {
    case StatusMessage::Kind::Done:
        return "✅ ";
    case StatusMessage::Kind::Failed:
        return "❌ ";
    case StatusMessage::Kind::Warning:
        return "⚠ ";
    case StatusMessage::Kind::Running:
        return "⏳ ";
    case StatusMessage::Kind::Rejected:
        return "🚫 ";
    case StatusMessage::Kind::Started:
        return "▶ ";
    case StatusMessage::Kind::Stopping:
        return "■ ";
    case StatusMessage::Kind::Opening:
        return "↗ ";
    case StatusMessage::Kind::None:
    case StatusMessage::Kind::Note:
        break;
    }
    return {};
}

} // namespace

QString StatusMessage::text() const
{
    const std::string_view sign = signOf(kind_);
    return line_.mid(QString::fromUtf8(sign.data(), static_cast<qsizetype>(sign.size())).size());
}

void StatusMessage::show(Kind kind, const std::string& text)
{
    const std::string whole = text.empty() ? text : std::string(signOf(kind)) + text;
    const QString line = ShownText::block(Text::trimmed(whole), ShownText::kArgumentLimit);
    if (line.isEmpty())
        kind = Kind::None;
    if (line == line_ && kind == kind_)
        return;
    line_ = line;
    kind_ = kind;
    Q_EMIT changed();
}

void StatusMessage::showNotOpened(const std::string& what)
{
    show(Kind::Failed, what + " - this desktop has no program that opens it");
}

} // namespace mervo
