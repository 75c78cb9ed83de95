#pragma once

#include "platform/applescript/values/Object.h"
#include "platform/desk/applications/mail/MailApplication.h"
#include "platform/desk/applications/mail/MailDictionary.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>

/// Mail's accounts, mailboxes and the application itself, as objects of the script host.
namespace mervo::desk {

/// The base of all of Mail's objects.
class MailObject : public applescript::Object {
public:
    MailObject(MailApplication& mail, applescript::TermId objectClass) noexcept
        : mail_(mail)
        , class_(objectClass)
    {
    }

    applescript::Application& application() const override { return mail_; }
    const applescript::ClassTerm& objectClass() const override;
    applescript::TermId classId() const noexcept { return class_; }
    MailApplication& mail() const noexcept { return mail_; }
    MailStore& store() const { return mail_.store(); }

protected:
    /// The name of the class, for designations.
    std::string className() const { return objectClass().name; }

private:
    MailApplication& mail_;
    applescript::TermId class_;
};

class MailRootObject final : public MailObject {
public:
    explicit MailRootObject(MailApplication& mail);
    applescript::Designation designation() const override { return {}; }
    applescript::Value get(applescript::TermId property) override;
    applescript::Value every(applescript::TermId elementClass) override;
};

class AccountObject final : public MailObject {
public:
    AccountObject(MailApplication& mail, const MailAccountSettings& account);
    const MailAccountSettings& account() const noexcept { return account_; }
    applescript::Designation designation() const override;
    applescript::Value get(applescript::TermId property) override;
    applescript::Value every(applescript::TermId elementClass) override;
    bool isSame(const applescript::Object& other) const override;

private:
    const MailAccountSettings& account_; // of the store, which outlives the script's objects
};

class MailboxObject final : public MailObject {
public:
    MailboxObject(applescript::Ref<AccountObject> account, MailFolder folder);
    const MailFolder& folder() const noexcept { return folder_; }
    const MailAccountSettings& account() const noexcept { return account_->account(); }
    /// The messages now; -10000 with a sentence when the mailbox cannot be read. See MailStore::messages.
    std::shared_ptr<const MailboxSnapshot> snapshot(MailLook::OwnChanges changes = MailLook::OwnChanges::end) const;
    /// Whether this is its account's mailbox for junk.
    bool isForJunk() const;

    applescript::Designation designation() const override;
    applescript::Value get(applescript::TermId property) override;
    applescript::Value every(applescript::TermId elementClass) override;
    std::size_t count(applescript::TermId elementClass) override;
    applescript::Value at(applescript::TermId elementClass, std::size_t index) override;
    applescript::Value withId(applescript::TermId elementClass, const applescript::Value& id) override;
    applescript::Value propertyOfEvery(applescript::TermId elementClass, applescript::TermId property) override;
    bool isSame(const applescript::Object& other) const override;

private:
    applescript::Value children() const;

    applescript::Ref<AccountObject> account_;
    MailFolder folder_;
    mutable std::optional<bool> isForJunk_; // computed on first use: it lists the account's folders
};

/// Runs work of the store and translates its errors into those of scripts: MessageGone into -1728, a missing
/// attachment into -43, everything else into -10000 with its sentence.
template <typename Work>
auto inScriptTerms(Work&& work) -> decltype(work())
{
    try {
        return work();
    } catch (const MessageGone&) {
        throw applescript::ScriptError(applescript::ErrorNumber::noSuchObject);
    } catch (const NoSuchAttachment& error) {
        throw applescript::ScriptError(
            applescript::ErrorNumber::fileNotFound, "File " + error.path() + " wasn’t found.");
    } catch (const MailError& error) {
        throw applescript::ScriptError(applescript::ErrorNumber::handlerFailed, error.what());
    }
}

} // namespace mervo::desk
