#include "tests/platform/applescript/ToyPost.h"

#include "platform/applescript/evaluator/Evaluator.h"
#include "platform/applescript/syntax/Parser.h"
#include "platform/applescript/values/Coercion.h"
#include "platform/applescript/values/Display.h"
#include "platform/applescript/values/Limits.h"
#include "platform/applescript/values/List.h"

#include <algorithm>

namespace mervo::test {

namespace as = mervo::applescript;
using as::CommonTerm::id;
using as::CommonTerm::name;

namespace {

enum ClassId { kAccount = 1, kBox, kLetter, kRecipient };
enum PropertyId { kSubject = 1, kSender, kSize, kReceived, kRead, kNote, kBoxOf, kUnread, kAddress, kFirst, kBroken };
enum CommandId { kSend = 1, kFile };
enum ParameterId { kLoudly = 1, kIn, kToAll };

const as::Dictionary& dictionary()
{
    static const as::Dictionary terms("Post",
        {
            {as::CommonTerm::applicationClass, "application", "applications",
                {{kFirst, "first box", false}, {kBroken, "broken part", true}}, {kAccount, kBox}},
            {kAccount, "account", "accounts", {{name, "name", true}, {id, "id"}}, {kBox}, as::kNoTerm, {"service"},
                {"services"}},
            {kBox, "box", "boxes", {{name, "name", true}, {kUnread, "unread count"}}, {kLetter, kBox}},
            {kLetter, "letter", "letters",
                {{id, "id"}, {kSubject, "subject", true}, {kSender, "sender"}, {kSize, "letter size"},
                    {kReceived, "date received"}, {kRead, "read status", true}, {kNote, "letter note", true},
                    {kBoxOf, "box", true}},
                {kRecipient}},
            {kRecipient, "to recipient", "to recipients", {{kAddress, "address", true}}},
        },
        {
            {kSend, "send", {{kLoudly, "loudly"}, {kToAll, "reply to all"}}},
            {kFile, "file away", {{kIn, "in"}}},
        },
        {"iLetter", "postcard"});
    return terms;
}

class PostApplication;

class Thing : public as::Object {
public:
    Thing(PostApplication& post, as::TermId kind)
        : post_(post)
        , kind_(kind)
    {
    }
    as::Application& application() const override;
    const as::ClassTerm& objectClass() const override { return *dictionary().findClass(kind_); }
    ToyWorld& world() const;

protected:
    PostApplication& post_;
    as::TermId kind_;
};

class PostApplication final : public as::Application {
public:
    explicit PostApplication(ToyWorld& world)
        : world_(world)
    {
        ++world.made;
    }
    const as::Dictionary& dictionary() const override { return mervo::test::dictionary(); }
    as::Ref<as::Object> root() override;
    bool isRunning() const override { return world_.isRunning; }
    void launch() override
    {
        if (world_.refusesAccess)
            throw as::ScriptError(as::ErrorNumber::notAuthorized);
        world_.isRunning = true;
        ++world_.launches;
    }
    void quit(as::Saving) override { world_.isRunning = false; }
    as::Value make(const as::MakeRequest& request) override;
    void remove(as::Object& object) override;
    as::Value move(as::Object& object, const as::Insertion& place) override;
    as::Value perform(const as::CommandCall& call) override;

    ToyWorld& world_;
};

as::Application& Thing::application() const
{
    return post_;
}

ToyWorld& Thing::world() const
{
    return post_.world_;
}

class BoxThing;

class RecipientThing final : public Thing {
public:
    RecipientThing(PostApplication& post, as::Ref<Thing> letter, std::string address)
        : Thing(post, kRecipient)
        , letter_(std::move(letter))
        , address_(std::move(address))
    {
    }
    as::Designation designation() const override
    {
        return {as::Designation::Form::index, "to recipient", as::Value::integer(1), letter_};
    }
    as::Value get(as::TermId) override { return as::Value::text(address_); }

private:
    as::Ref<Thing> letter_;
    std::string address_;
};

as::Value valueOf(const ToyLetter& letter, as::TermId property)
{
    switch (property) {
    case id:
        return as::Value::integer(letter.id);
    case kSubject:
        return as::Value::text(letter.subject);
    case kSender:
        return as::Value::text(letter.sender);
    case kSize:
        return as::Value::integer(letter.size);
    case kReceived:
        return as::Value::date(letter.received);
    case kRead:
        return as::Value::boolean(letter.isRead);
    default:
        return letter.note.empty() ? as::Value::missing() : as::Value::text(letter.note);
    }
}

/// The sizes of the letters as they are now, each made when it is asked for.
class Sizes final : public as::ItemSource {
public:
    Sizes(ToyWorld& world, const std::vector<ToyLetter>& letters)
        : world_(world)
    {
        for (const ToyLetter& letter : letters)
            sizes_.push_back(letter.size);
    }
    std::size_t size() const noexcept override { return sizes_.size(); }
    as::Value item(std::size_t index) const override
    {
        ++world_.madeItems;
        return as::Value::integer(sizes_[index]);
    }

private:
    ToyWorld& world_;
    std::vector<std::int64_t> sizes_;
};

class BoxThing final : public Thing {
public:
    BoxThing(PostApplication& post, std::string account, std::string box)
        : Thing(post, kBox)
        , account_(std::move(account))
        , box_(std::move(box))
    {
    }
    as::Designation designation() const override;
    ToyBox& box() const
    {
        for (ToyAccount& account : world().accounts) {
            for (ToyBox& candidate : account.boxes) {
                if (account.id == account_ && candidate.name == box_)
                    return candidate;
            }
        }
        throw as::ScriptError(as::ErrorNumber::noSuchObject);
    }
    as::Value get(as::TermId property) override
    {
        ++world().singleRequests;
        if (property == name)
            return as::Value::text(box().name);
        return as::Value::integer(
            std::count_if(box().letters.begin(), box().letters.end(), [](const auto& each) { return !each.isRead; }));
    }
    std::size_t count(as::TermId elementClass) override { return elementClass == kLetter ? box().letters.size() : 0; }
    as::Value every(as::TermId elementClass) override;
    as::Value propertyOfEvery(as::TermId elementClass, as::TermId property) override
    {
        if (elementClass != kLetter || property == kBoxOf)
            return Object::propertyOfEvery(elementClass, property);
        ++world().bulkRequests;
        if (elementClass == kLetter && property == kSize)
            return as::Value::list(as::makeRef<as::List>(std::make_unique<Sizes>(world(), box().letters)));
        auto values = std::vector<as::Value>();
        values.reserve(box().letters.size());
        for (const ToyLetter& letter : box().letters)
            values.push_back(valueOf(letter, property));
        return as::Value::list(std::move(values));
    }

    std::string account_;
    std::string box_;
};

class LetterThing final : public Thing {
public:
    LetterThing(PostApplication& post, as::Ref<BoxThing> box, std::int64_t number)
        : Thing(post, kLetter)
        , box_(std::move(box))
        , number_(number)
    {
    }
    as::Designation designation() const override
    {
        return {as::Designation::Form::id, "letter", as::Value::integer(number_), box_};
    }
    ToyLetter& letter() const
    {
        for (ToyLetter& letter : box_->box().letters) {
            if (letter.id == number_)
                return letter;
        }
        throw as::ScriptError(as::ErrorNumber::noSuchObject);
    }
    as::Value get(as::TermId property) override
    {
        ++world().singleRequests;
        if (property == kBoxOf)
            return as::Value::object(box_);
        return valueOf(letter(), property);
    }
    void set(as::TermId property, const as::Value& value) override
    {
        if (property == kSubject)
            letter().subject = as::toString(value);
        else if (property == kRead)
            letter().isRead = as::toBoolean(value);
        else if (property == kNote)
            letter().note = as::toString(value);
        else
            throw as::ScriptError(as::ErrorNumber::cannotSet);
    }
    as::Value every(as::TermId) override
    {
        std::vector<as::Value> all;
        for (const std::string& address : letter().recipients)
            all.push_back(as::Value::object(as::makeRef<RecipientThing>(post_, as::Ref<Thing>(this), address)));
        return as::Value::list(std::move(all));
    }
    bool exists() override
    {
        try {
            letter();
            return true;
        } catch (const as::ScriptError&) {
            return false;
        }
    }

    as::Ref<BoxThing> box_;
    std::int64_t number_;
};

as::Value BoxThing::every(as::TermId elementClass)
{
    ++world().listings;
    std::vector<as::Value> all;
    if (elementClass == kLetter) {
        all.reserve(box().letters.size());
        for (const ToyLetter& letter : box().letters)
            all.push_back(as::Value::object(as::makeRef<LetterThing>(post_, as::Ref<BoxThing>(this), letter.id)));
    }
    return as::Value::list(std::move(all));
}

class AccountThing final : public Thing {
public:
    AccountThing(PostApplication& post, std::string account)
        : Thing(post, kAccount)
        , account_(std::move(account))
    {
    }
    as::Designation designation() const override
    {
        return {as::Designation::Form::id, "account", as::Value::text(account_), {}};
    }
    ToyAccount& account() const
    {
        for (ToyAccount& candidate : world().accounts) {
            if (candidate.id == account_)
                return candidate;
        }
        throw as::ScriptError(as::ErrorNumber::noSuchObject);
    }
    as::Value get(as::TermId property) override
    {
        return as::Value::text(property == id ? account().id : account().name);
    }
    void set(as::TermId, const as::Value& value) override { account().name = as::toString(value); }
    as::Value every(as::TermId) override
    {
        std::vector<as::Value> all;
        for (const ToyBox& box : account().boxes)
            all.push_back(as::Value::object(as::makeRef<BoxThing>(post_, account_, box.name)));
        return as::Value::list(std::move(all));
    }

private:
    std::string account_;
};

as::Designation BoxThing::designation() const
{
    return {as::Designation::Form::name, "box", as::Value::text(box_), as::makeRef<AccountThing>(post_, account_)};
}

class RootThing final : public Thing {
public:
    explicit RootThing(PostApplication& post)
        : Thing(post, as::CommonTerm::applicationClass)
    {
    }
    as::Designation designation() const override { return {}; }
    as::Value get(as::TermId property) override
    {
        if (property == kBroken)
            throw std::runtime_error("the store is broken");
        return as::Value::object(
            as::makeRef<BoxThing>(post_, world().accounts.front().id, world().accounts.front().boxes.front().name));
    }
    void set(as::TermId, const as::Value&) override { throw as::ScriptError(as::ErrorNumber::accessNotAllowed); }
    as::Value every(as::TermId elementClass) override
    {
        std::vector<as::Value> all;
        if (elementClass == kAccount) {
            for (const ToyAccount& account : world().accounts)
                all.push_back(as::Value::object(as::makeRef<AccountThing>(post_, account.id)));
        }
        return as::Value::list(std::move(all));
    }
};

as::Ref<as::Object> PostApplication::root()
{
    return as::makeRef<RootThing>(*this);
}

as::Value PostApplication::make(const as::MakeRequest& request)
{
    auto* box = dynamic_cast<BoxThing*>(request.place.anchor.get());
    if (request.newClass->id != kLetter || !box)
        throw as::ScriptError(as::ErrorNumber::handlerFailed);
    ToyLetter letter;
    letter.id = 900 + static_cast<std::int64_t>(box->box().letters.size());
    if (const as::Value* subject = request.property(kSubject))
        letter.subject = as::toString(*subject);
    auto& letters = box->box().letters;
    letters.insert(request.place.where == as::Insertion::Where::beginning ? letters.begin() : letters.end(), letter);
    return as::Value::object(as::makeRef<LetterThing>(*this, as::Ref<BoxThing>(box), letter.id));
}

void PostApplication::remove(as::Object& object)
{
    auto& letter = dynamic_cast<LetterThing&>(object);
    letter.letter();
    std::erase_if(letter.box_->box().letters, [&](const auto& each) { return each.id == letter.number_; });
}

as::Value PostApplication::move(as::Object& object, const as::Insertion& place)
{
    auto* target = dynamic_cast<BoxThing*>(place.anchor.get());
    if (!target)
        throw as::ScriptError(as::ErrorNumber::handlerFailed);
    auto& letter = dynamic_cast<LetterThing&>(object);
    target->box().letters.push_back(letter.letter());
    remove(object);
    return {};
}

as::Value PostApplication::perform(const as::CommandCall& call)
{
    std::string line = call.command == kSend ? "send " : "file ";
    line += as::displayForm(call.direct);
    if (const as::Value* place = call.argument(kIn))
        line += " in " + as::displayForm(*place);
    if (call.flag(kLoudly, false))
        line += " loudly";
    if (call.argument(kToAll))
        line += call.flag(kToAll, false) ? " to all" : " to one";
    world_.commands.push_back(line);
    return as::Value::boolean(true);
}

std::string run(as::ApplicationRegistry& registry, const std::string& text, const std::vector<std::string>& arguments)
{
    try {
        const auto script = as::parse(text, registry);
        as::Evaluator evaluator(*script, registry, [](const std::string&) {});
        return as::displayForm(evaluator.run(arguments));
    } catch (const as::ScriptError& error) {
        return "error " + std::to_string(error.number) + ": " + error.message;
    }
}

} // namespace

ToyWorld ToyWorld::sample()
{
    const auto day = [](int number) { return as::Date::fromParts(2024, 3, number); };
    ToyWorld world;
    world.accounts = {
        {"A1", "Home",
            {{"INBOX",
                 {{7, "Weekly Report", "Ann <ann@example.org>", 2000, day(9), false, "", {"me@example.org"}},
                     {8, "Lunch", "Bob <bob@example.org>", 300, day(5), true, "kept",
                         {"you@example.org", "me@example.org"}},
                     {9, "Re: weekly report", "ann@example.org", 1500, day(1), true, "", {}}}},
                {"Old", {}}}},
        {"A2", "Work", {{"INBOX", {{20, "Invoice", "shop@example.com", 5000, day(2), false, "", {}}}}}},
    };
    return world;
}

ToyWorld ToyWorld::large(std::size_t letters)
{
    ToyWorld world;
    world.accounts = {{"B", "Bulk", {{"INBOX", {}}}}};
    auto& box = world.accounts.front().boxes.front().letters;
    for (std::size_t i = 0; i < letters; ++i) {
        const auto number = static_cast<std::int64_t>(i);
        box.push_back(
            {number, "Subject number " + std::to_string(i), "Person " + std::to_string(i % 97) + " <p@example.org>",
                1000 + number * 7 % 90000, as::Date::fromParts(2024, 1, 1, number * 60), i % 3 == 0, "", {}});
    }
    return world;
}

void registerToyPost(as::ApplicationRegistry& registry, ToyWorld& world)
{
    registry.add(
        {"Post", "Toy Post"}, "com.example.post", []() -> const as::Dictionary& { return dictionary(); },
        [&world]() -> std::unique_ptr<as::Application> { return std::make_unique<PostApplication>(world); });
}

std::string runOver(ToyWorld& world, const std::string& script, const std::vector<std::string>& arguments,
    std::chrono::nanoseconds processorTime)
{
    as::ApplicationRegistry registry;
    registerToyPost(registry, world);
    const as::Limits::Scope limits(0, as::Limits::kDefaultBytes, processorTime);
    return run(registry, script, arguments);
}

std::string runAlone(const std::string& script, std::uint64_t steps, std::size_t bytes)
{
    as::ApplicationRegistry none;
    const as::Limits::Scope limits(steps, bytes);
    return run(none, script, {});
}

} // namespace mervo::test
