#include "platform/applescript/values/List.h"

#include "platform/applescript/values/Limits.h"

namespace mervo::applescript {

namespace {

constinit thread_local Container* newest = nullptr;

} // namespace

Container::Container() noexcept
    : next_(newest)
{
    if (newest)
        newest->previous_ = this;
    newest = this;
}

Container::~Container()
{
    leaveChain();
}

void Container::leaveChain() noexcept
{
    if (!isChained_)
        return;
    isChained_ = false;
    (previous_ ? previous_->next_ : newest) = next_;
    if (next_)
        next_->previous_ = previous_;
}

void Container::releaseAll() noexcept
{
    // Emptying one can free others, so each is held and taken out of the chain first.
    while (newest) {
        const Ref<Container> held(newest);
        held->leaveChain();
        held->clear();
    }
}

List::List(std::vector<Value> items)
    : items_(std::move(items))
{
    charge();
}

List::~List()
{
    Limits::discharge(charged_);
}

List::List(std::unique_ptr<const ItemSource> source)
    : source_(std::move(source))
{
}

void List::settle() const
{
    std::vector<Value> items;
    items.reserve(source_->size());
    for (std::size_t i = 0; i < source_->size(); ++i)
        items.push_back(source_->item(i));
    items_ = std::move(items);
    source_.reset();
    charge();
}

void List::charge() const
{
    const std::size_t bytes = items_.capacity() * sizeof(Value);
    if (bytes > charged_) {
        Limits::charge(bytes - charged_);
        charged_ = bytes;
    }
}

void List::clear() noexcept
{
    source_.reset();
    const std::vector<Value> gone = std::move(items_);
    items_.clear();
}

void List::reserve(std::size_t count)
{
    items();
    items_.reserve(count);
    charge();
}

void List::append(Value value)
{
    items();
    if (items_.size() == items_.capacity())
        reserve(items_.empty() ? 4 : items_.size() * 2);
    items_.push_back(std::move(value));
}

void List::prepend(Value value)
{
    append({});
    for (std::size_t i = items_.size() - 1; i > 0; --i)
        std::swap(items_[i], items_[i - 1]);
    items_.front() = std::move(value);
}

const Value* Record::find(Symbol label) const noexcept
{
    for (const Field& field : fields_) {
        if (field.label == label)
            return &field.value;
    }
    return nullptr;
}

Record::~Record()
{
    Limits::discharge(charged_);
}

void Record::add(Symbol label, Value value)
{
    Limits::charge(sizeof(Field));
    charged_ += sizeof(Field);
    fields_.push_back({label, std::move(value)});
}

void Record::set(Symbol label, Value value)
{
    for (Field& field : fields_) {
        if (field.label == label) {
            field.value = std::move(value);
            return;
        }
    }
    add(label, std::move(value));
}

void Record::addMissing(Symbol label, const Value& value)
{
    if (!find(label))
        add(label, value);
}

void Record::clear() noexcept
{
    const std::vector<Field> gone = std::move(fields_);
    fields_.clear();
}

} // namespace mervo::applescript
