#pragma once

#include "platform/desk/addressbook/AddressBook.h"
#include "platform/desk/applications/shared/DeskApplicationBase.h"

#include <memory>

namespace mervo::desk {

/// The desk's Contacts as scripts see it: the owner's address book. Nothing that a script changes is kept before it
/// says `save`.
class ContactsApplication final : public DeskApplicationBase {
public:
    /// `sections` must outlive it.
    explicit ContactsApplication(Sections sections)
        : DeskApplicationBase(DeskApplication::contacts, sections)
    {
    }

    const applescript::Dictionary& dictionary() const override;
    applescript::Ref<applescript::Object> root() override;
    applescript::Value make(const applescript::MakeRequest& request) override;
    void remove(applescript::Object& object) override;
    applescript::Value perform(const applescript::CommandCall& call) override;

    AddressBook& book();
    /// What the book holds, read now where it has not been.
    const std::vector<AddressBook::CardRef>& cards();

private:
    applescript::Value makePerson(const applescript::MakeRequest& request);
    void changeMembers(const applescript::CommandCall& call);

    std::unique_ptr<AddressBook> book_;
};

/// What the address book cannot do, as an error of a script (-10000).
template <typename Work>
auto inScriptTerms(const Work& work)
{
    try {
        return work();
    } catch (const ContactError& error) {
        throw applescript::ScriptError(applescript::ErrorNumber::handlerFailed, error.what());
    }
}

/// Makes it known to the script host. `sections` must outlive the registry.
void registerContacts(applescript::ApplicationRegistry& registry, Sections sections);

} // namespace mervo::desk
