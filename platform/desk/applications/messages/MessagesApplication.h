#pragma once

#include "platform/applescript/values/Application.h"

#include <string>
#include <vector>

namespace mervo::desk {

/// The desk's Messages as scripts see it: one account, whose service type is iMessage, and everyone who has a handle.
/// Sending goes through the command of desk.toml.
class MessagesApplication final : public applescript::Application {
public:
    const applescript::Dictionary& dictionary() const override;
    applescript::Ref<applescript::Object> root() override;
    bool isRunning() const override { return isRunning_; }
    void launch() override { isRunning_ = true; }
    void quit(applescript::Saving) override { isRunning_ = false; }
    applescript::Value perform(const applescript::CommandCall& call) override;

private:
    bool isRunning_ = false;
};

/// The words that Messages adds to a script; the same object at every call.
const applescript::Dictionary& messagesDictionary();

} // namespace mervo::desk
