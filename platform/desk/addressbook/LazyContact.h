#pragma once

#include "platform/desk/addressbook/Contact.h"

#include <memory>
#include <string>
#include <string_view>

namespace mervo::desk {

/// A contact as bytes: what is asked of every contact stands in front (CacheText.h).
std::string packed(const Contact& contact);

/// A contact that is unpacked when more is asked for than its name and whether it is a group. Belongs to one thread.
class LazyContact {
public:
    LazyContact() = default;
    LazyContact(Contact contact)
        : contact_(std::make_unique<Contact>(std::move(contact)))
    {
    }
    /// `bytes` are of packed(), and must outlive this. Throws std::out_of_range where they are too short.
    explicit LazyContact(std::string_view bytes);

    std::string_view name() const { return contact_ ? contact_->name : name_; }
    bool isGroup() const { return contact_ ? contact_->isGroup : isGroup_; }
    const Contact& operator*() const;
    const Contact* operator->() const { return &**this; }

private:
    std::string_view name_, rest_;
    bool isGroup_ = false;
    mutable std::unique_ptr<Contact> contact_; ///< null: not unpacked yet
};

} // namespace mervo::desk
