#pragma once

#include <QLocalServer>
#include <QLockFile>
#include <QObject>

#include <filesystem>
#include <stdexcept>

namespace mervo {

/// One cockpit for each person and home directory: the first holds a lock in the person's runtime folder for as long as
/// it lives (also a killed one loses it), and listens on a socket beside it, which nobody else may open.
class SingleInstance final : public QObject {
    Q_OBJECT

public:
    /// `home`: the directory that this cockpit watches.
    explicit SingleInstance(const std::filesystem::path& home);

    /// True when no other cockpit of this person runs; it is the first from then on. Needs no application object.
    bool claim();

    /// Listens for later starts; after `claim`.
    void listen();

    /// Tells the first one to open its popover and waits until it has heard. Throws std::runtime_error with a sentence
    /// when it does not answer.
    void tellFirst() const;

Q_SIGNALS:
    void openRequested();

private:
    void greet();

    QString socket_;
    QLockFile lock_;
    QLocalServer server_;
};

} // namespace mervo
