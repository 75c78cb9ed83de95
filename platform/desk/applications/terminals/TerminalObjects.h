#pragma once

#include "platform/applescript/values/Object.h"

#include <string>

namespace mervo::desk {

class TerminalApplication;

/// The application itself, or a window, tab or session by the id of the session in it.
class TerminalObject final : public applescript::Object {
public:
    explicit TerminalObject(TerminalApplication& terminal);
    TerminalObject(TerminalApplication& terminal, applescript::TermId objectClass, std::string id);

    applescript::Application& application() const override;
    const applescript::ClassTerm& objectClass() const override;
    applescript::Designation designation() const override;
    applescript::Value get(applescript::TermId property) override;
    void set(applescript::TermId property, const applescript::Value& value) override;
    /// A window that is gone has no tab, so that a loop over windows gets past it.
    applescript::Value every(applescript::TermId elementClass) override;
    bool exists() override;

    /// Of the session; empty for the application.
    const std::string& id() const { return id_; }

private:
    using Object::at;
    applescript::Value at(applescript::TermId objectClass) const;

    TerminalApplication& terminal_;
    applescript::TermId class_;
    std::string id_;
};

} // namespace mervo::desk
