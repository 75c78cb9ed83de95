#include "tests/platform/applescript/ToyPost.h"

#include "platform/applescript/evaluator/Evaluator.h"
#include "platform/applescript/syntax/Parser.h"
#include "platform/applescript/values/Coercion.h"
#include "platform/applescript/values/Display.h"
#include "platform/applescript/values/Limits.h"
#include "platform/applescript/values/List.h"

#include <algorithm>

namespace mervo::test {

using namespace applescript;
using CommonTerm::id;
using CommonTerm::name;

namespace {

enum ClassId { kAccount = 1, kBox, kLetter, kRecipient };
enum PropertyId { kSubject = 1, kSender, kSize, kReceived, kRead, kNote, kBoxOf, kUnread, kAddress, kFirst, kBroken };
enum CommandId { kSend = 1, kFile };
enum ParameterId { kLoudly = 1, kIn, kToAll };

const Dictionary& dictionary()
{
    static const Dictionary terms("Post",
        {
            {CommonTerm::applicationClass, "application", "applications",
                {{kFirst, "first box"}, {kBroken, "broken part", kSettable}}, {kAccount, kBox}},
            {kAccount, "account", "accounts", {{name, "name", kSettable}, {id, "id"}}, {kBox}, kNoTerm, {"service"},
                {"services"}},
            {kBox, "box", "boxes", {{name, "name", kSettable}, {kUnread, "unread count"}}, {kLetter, kBox}},
            {kLetter, "letter", "letters",
                {{id, "id"}, {kSubject, "subject", kSettable}, {kSender, "sender"}, {kSize, "letter size"},
                    {kReceived, "date received"}, {kRead, "read status", kSettable}, {kNote, "letter note", kSettable},
                    {kBoxOf, "box", kSettable}},
                {kRecipient}},
            {kRecipient, "to recipient", "to recipients", {{kAddress, "address", kSettable}}},
        },
        {
            {kSend, "send", {{kLoudly, "loudly"}, {kToAll, "reply to all"}}},
            {kFile, "file away", {{kIn, "in"}}},
        },
        {"iLetter", "postcard"});
    return terms;
}

class Post final : public Application {
public:
    explicit Post(ToyWorld& world)
        : world_(world)
    {
        ++world.made;
    }
    const Dictionary& dictionary() const override { return mervo::test::dictionary(); }
    Ref<Object> root() override;
    bool isRunning() const override { return world_.isRunning; }
    void launch() override
    {
        if (world_.refusesAccess)
            throw ScriptError(ErrorNumber::notAuthorized);
        world_.isRunning = true;
        ++world_.launches;
    }
    void quit(Saving) override { world_.isRunning = false; }
    Value make(const MakeRequest& request) override;
    void remove(Object& object) override;
    Value move(Object& object, const Insertion& place) override;
    Value perform(const CommandCall& call) override;

    ToyWorld& world_;
};

template <typename Items, typename Test>
auto& theOne(Items& items, Test test)
{
    const auto found = std::find_if(items.begin(), items.end(), test);
    if (found == items.end())
        throw ScriptError(ErrorNumber::noSuchObject);
    return *found;
}

Value valueOf(const ToyLetter& letter, TermId property)
{
    switch (property) {
    case id:
        return Value::integer(letter.id);
    case kSubject:
        return Value::text(letter.subject);
    case kSender:
        return Value::text(letter.sender);
    case kSize:
        return Value::integer(letter.size);
    case kReceived:
        return Value::date(letter.received);
    case kRead:
        return Value::boolean(letter.isRead);
    default:
        return letter.note.empty() ? Value::missing() : Value::text(letter.note);
    }
}

/// The sizes of the letters as they are now, each made when it is asked for.
class Sizes final : public ItemSource {
public:
    Sizes(ToyWorld& world, const std::vector<ToyLetter>& letters)
        : world_(world)
    {
        for (const ToyLetter& letter : letters)
            sizes_.push_back(letter.size);
    }
    std::size_t size() const noexcept override { return sizes_.size(); }
    Value item(std::size_t index) const override
    {
        ++world_.madeItems;
        return Value::integer(sizes_[index]);
    }

private:
    ToyWorld& world_;
    std::vector<std::int64_t> sizes_;
};

/// Any object: a handle by owner and key. What it stands for is looked up at each use, and may be gone.
class Thing final : public Object {
public:
    Thing(Post& post, TermId kind, Ref<Thing> owner = {}, Value key = {})
        : post_(post)
        , kind_(kind)
        , owner_(std::move(owner))
        , key_(std::move(key))
    {
    }
    Application& application() const override { return post_; }
    const ClassTerm& objectClass() const override { return *dictionary().findClass(kind_); }
    Designation designation() const override
    {
        using Form = Designation::Form;
        if (kind_ == CommonTerm::applicationClass)
            return {};
        if (kind_ == kRecipient)
            return {Form::index, "to recipient", Value::integer(1), owner_};
        return {kind_ == kBox ? Form::name : Form::id, objectClass().name, key_, owner_};
    }
    Value get(TermId property) override;
    void set(TermId property, const Value& value) override;
    Value every(TermId elementClass) override;
    std::size_t count(TermId elementClass) override
    {
        if (kind_ == kBox)
            return elementClass == kLetter ? box().letters.size() : 0;
        return Object::count(elementClass);
    }
    Value propertyOfEvery(TermId elementClass, TermId property) override;
    bool exists() override
    {
        try {
            return kind_ != kLetter || letter().id == key_.asInteger();
        } catch (const ScriptError&) {
            return false;
        }
    }

    ToyWorld& world() const { return post_.world_; }
    ToyAccount& account() const
    {
        return theOne(world().accounts, [&](const auto& each) { return each.id == key_.view(); });
    }
    ToyBox& box() const
    {
        return theOne(owner_->account().boxes, [&](const auto& each) { return each.name == key_.view(); });
    }
    ToyLetter& letter() const
    {
        return theOne(owner_->box().letters, [&](const auto& each) { return each.id == key_.asInteger(); });
    }

    Post& post_;
    TermId kind_;
    Ref<Thing> owner_; // null: the application
    Value key_; // the id of an account or letter, the name of a box, the address of a recipient
};

Value Thing::get(TermId property)
{
    switch (kind_) {
    case kAccount:
        return Value::text(property == id ? account().id : account().name);
    case kBox:
        ++world().singleRequests;
        if (property == name)
            return Value::text(box().name);
        return Value::integer(
            std::count_if(box().letters.begin(), box().letters.end(), [](const auto& each) { return !each.isRead; }));
    case kLetter:
        ++world().singleRequests;
        return property == kBoxOf ? Value::object(owner_) : valueOf(letter(), property);
    case kRecipient:
        return key_;
    default:
        if (property == kBroken)
            throw std::runtime_error("the store is broken");
        return every(kAccount).asList()[0].asObject().every(kBox).asList()[0];
    }
}

void Thing::set(TermId property, const Value& value)
{
    if (kind_ == CommonTerm::applicationClass)
        throw ScriptError(ErrorNumber::accessNotAllowed);
    if (kind_ == kAccount) {
        account().name = toString(value);
    } else if (kind_ == kLetter && property == kSubject) {
        letter().subject = toString(value);
    } else if (kind_ == kLetter && property == kRead) {
        letter().isRead = toBoolean(value);
    } else if (kind_ == kLetter && property == kNote) {
        letter().note = toString(value);
    } else {
        throw ScriptError(ErrorNumber::cannotSet);
    }
}

Value Thing::every(TermId elementClass)
{
    std::vector<Value> all;
    const auto add = [&](TermId kind, Value key) {
        Ref<Thing> owner = kind == kAccount ? Ref<Thing>() : Ref<Thing>(this);
        all.push_back(Value::object(makeRef<Thing>(post_, kind, std::move(owner), std::move(key))));
    };
    if (kind_ == CommonTerm::applicationClass && elementClass == kAccount) {
        for (const ToyAccount& each : world().accounts)
            add(kAccount, Value::text(each.id));
    } else if (kind_ == kAccount) {
        for (const ToyBox& each : account().boxes)
            add(kBox, Value::text(each.name));
    } else if (kind_ == kBox) {
        ++world().listings;
        if (elementClass == kLetter) {
            for (const ToyLetter& each : box().letters)
                add(kLetter, Value::integer(each.id));
        }
    } else if (kind_ == kLetter) {
        for (const std::string& each : letter().recipients)
            add(kRecipient, Value::text(each));
    }
    return Value::list(std::move(all));
}

Value Thing::propertyOfEvery(TermId elementClass, TermId property)
{
    if (kind_ != kBox || elementClass != kLetter || property == kBoxOf)
        return Object::propertyOfEvery(elementClass, property);
    ++world().bulkRequests;
    if (property == kSize)
        return Value::list(makeRef<List>(std::make_unique<Sizes>(world(), box().letters)));
    std::vector<Value> values;
    for (const ToyLetter& letter : box().letters)
        values.push_back(valueOf(letter, property));
    return Value::list(std::move(values));
}

Thing& checked(Object& object, TermId kind)
{
    auto& thing = dynamic_cast<Thing&>(object);
    if (thing.kind_ != kind)
        throw ScriptError(ErrorNumber::handlerFailed);
    return thing;
}

Ref<Object> Post::root()
{
    return makeRef<Thing>(*this, CommonTerm::applicationClass);
}

Value Post::make(const MakeRequest& request)
{
    Thing& box = checked(*request.place.anchor, kBox);
    if (request.newClass->id != kLetter)
        throw ScriptError(ErrorNumber::handlerFailed);
    auto& letters = box.box().letters;
    ToyLetter letter;
    letter.id = 900 + static_cast<std::int64_t>(letters.size());
    if (const Value* subject = request.property(kSubject))
        letter.subject = toString(*subject);
    letters.insert(request.place.where == Insertion::Where::beginning ? letters.begin() : letters.end(), letter);
    return Value::object(makeRef<Thing>(*this, kLetter, Ref<Thing>(&box), Value::integer(letter.id)));
}

void Post::remove(Object& object)
{
    const Thing& letter = checked(object, kLetter);
    auto& letters = letter.owner_->box().letters;
    letters.erase(letters.begin() + (&letter.letter() - letters.data()));
}

Value Post::move(Object& object, const Insertion& place)
{
    checked(*place.anchor, kBox).box().letters.push_back(checked(object, kLetter).letter());
    remove(object);
    return {};
}

Value Post::perform(const CommandCall& call)
{
    std::string line = call.command == kSend ? "send " : "file ";
    line += displayForm(call.direct);
    if (const Value* place = call.argument(kIn))
        line += " in " + displayForm(*place);
    if (call.isOn(kLoudly))
        line += " loudly";
    if (call.argument(kToAll))
        line += call.isOn(kToAll) ? " to all" : " to one";
    world_.commands.push_back(line);
    return Value::boolean(true);
}

std::string run(ApplicationRegistry& registry, const std::string& text, const std::vector<std::string>& arguments)
{
    try {
        const auto script = parse(text, registry);
        Evaluator evaluator(*script, registry, [](const std::string&) {});
        return displayForm(evaluator.run(arguments));
    } catch (const ScriptError& error) {
        return "error " + std::to_string(error.number) + ": " + error.message;
    }
}

} // namespace

ToyWorld ToyWorld::sample()
{
    const auto day = [](int number) { return Date::fromParts(2024, 3, number); };
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
                1000 + number * 7 % 90000, Date::fromParts(2024, 1, 1, number * 60), i % 3 == 0, "", {}});
    }
    return world;
}

void registerToyPost(ApplicationRegistry& registry, ToyWorld& world)
{
    registry.add(
        {"Post", "Toy Post"}, "com.example.post", []() -> const Dictionary& { return dictionary(); },
        [&world]() -> std::unique_ptr<Application> { return std::make_unique<Post>(world); });
}

std::string runOver(ToyWorld& world, const std::string& script, const std::vector<std::string>& arguments,
    std::chrono::nanoseconds processorTime)
{
    ApplicationRegistry registry;
    registerToyPost(registry, world);
    const Limits::Scope limits(0, Limits::kDefaultBytes, processorTime);
    return run(registry, script, arguments);
}

std::string runAlone(const std::string& script, std::uint64_t steps, std::size_t bytes)
{
    ApplicationRegistry none;
    const Limits::Scope limits(steps, bytes);
    return run(none, script, {});
}

} // namespace mervo::test
