#pragma once

#include <QObject>
#include <QString>

#include <string>

namespace mervo {

/// A message to the person: what came of an operation, or what is wrong at present. Main thread only.
class StatusMessage : public QObject {
    Q_OBJECT
    Q_PROPERTY(mervo::StatusMessage::Kind kind READ kind NOTIFY changed)
    Q_PROPERTY(QString text READ text NOTIFY changed)
    Q_PROPERTY(QString line READ line NOTIFY changed)

public:
    /// Capitalised, as QML requires of enumerators.
    enum class Kind { None, Note, Done, Failed, Warning, Running, Rejected, Started, Stopping, Opening };
    Q_ENUM(Kind)

    using QObject::QObject;

    Kind kind() const { return kind_; }
    QString text() const; ///< safe to show, without the sign
    QString line() const { return line_; } ///< the same behind the sign of its kind; empty: there is no message

    /// An empty text is no message, whatever its kind.
    void show(Kind kind, const std::string& text);
    void clear() { show(Kind::None, {}); }
    /// Says that the desktop opens no program for this.
    void showNotOpened(const std::string& what);

Q_SIGNALS:
    void changed();

private:
    Kind kind_ = Kind::None;
    QString line_;
};

} // namespace mervo
