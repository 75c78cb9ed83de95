#pragma once

#include <QLocalServer>
#include <QLockFile>
#include <QObject>

#include <filesystem>
#include <stdexcept>

namespace mervo {

/// One cockpit per person and home directory: the first holds a lock in the person's runtime folder while it lives
/// (being killed releases it) and listens on a socket beside it that only this person can open.
class SingleInstance final : public QObject {
    Q_OBJECT

public:
    /// `home`: the directory that this cockpit watches.
    explicit SingleInstance(const std::filesystem::path& home);

    /// True if no other cockpit of this person runs; this one then holds the lock. Needs no application object.
    bool claim();

    /// Listens for later starts; after `claim`.
    void listen();

    /// Tells the first one to open its popover and waits for its answer. Throws std::runtime_error with a sentence if
    /// there is none.
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
