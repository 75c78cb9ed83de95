#pragma once

#include "platform/applescript/values/Application.h"
#include "platform/desk/applications/shared/DeskApplicationBase.h"
#include "platform/desk/mail/MailStore.h"

#include <memory>
#include <vector>

namespace mervo::desk {

class OutgoingObject;

/// The desk's Mail as scripts see it. It has no windows: a message is opened by handing it to the desktop's own mail
/// program.
class MailApplication final : public DeskApplicationBase {
public:
    /// `sections` must outlive it.
    explicit MailApplication(Sections sections);
    MailApplication(const MailApplication&) = delete;
    MailApplication& operator=(const MailApplication&) = delete;
    ~MailApplication() override;

    const applescript::Dictionary& dictionary() const override;
    applescript::Ref<applescript::Object> root() override;
    /// Reads the configuration: a mistake in it is the error, in the words of ConfigurationError.
    void launch() override;
    void quit(applescript::Saving saving) override;
    applescript::Value make(const applescript::MakeRequest& request) override;
    void remove(applescript::Object& object) override;
    applescript::Value move(applescript::Object& object, const applescript::Insertion& place) override;
    applescript::Value perform(const applescript::CommandCall& call) override;

    MailStore& store();
    const std::vector<applescript::Ref<OutgoingObject>>& outgoing() const noexcept { return outgoing_; }

private:
    applescript::Value answer(const applescript::CommandCall& call);
    applescript::Value add(applescript::Ref<OutgoingObject> message);

    std::unique_ptr<MailStore> store_; // once made it stays: objects of the script refer to it
    std::vector<applescript::Ref<OutgoingObject>> outgoing_;
};

/// Refuses a request that is understood but not supported: -10000 with a sentence.
[[noreturn]] void refuse(const char* sentence);

/// Makes it known to the script host. `sections` must outlive the registry.
void registerMail(applescript::ApplicationRegistry& registry, Sections sections);

} // namespace mervo::desk
