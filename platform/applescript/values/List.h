#pragma once

#include "platform/applescript/values/Value.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace mervo::applescript {

/// The base of lists and records. They can contain themselves, and reference counting never frees such a cycle.
class Container : public Cell {
public:
    Container() noexcept;
    Container(const Container&) = delete;
    Container& operator=(const Container&) = delete;
    ~Container() override;

    /// Empties every list and record that is left on this thread, and so frees the cycles. For the end of an
    /// interpreter, when no value is used any more.
    static void releaseAll() noexcept;

protected:
    virtual void clear() noexcept = 0;

private:
    void leaveChain() noexcept;

    bool isChained_ = true;
    Container* previous_ = nullptr;
    Container* next_ = nullptr;
};

/// Produces the items of a list on demand, for columns of many thousands of values of which a script reads few, or each
/// only once. Producing an item twice must look the same as sharing it: numbers, booleans, texts and handles of objects
/// may be created anew, but a date, which scripts change in place, must be kept once created.
class ItemSource {
public:
    ItemSource() = default;
    ItemSource(const ItemSource&) = delete;
    ItemSource& operator=(const ItemSource&) = delete;
    virtual ~ItemSource() = default;

    virtual std::size_t size() const noexcept = 0;
    virtual Value item(std::size_t index) const = 0;
};

/// A list, shared by all its names. Reading an item and appending take constant time.
class List final : public Container {
public:
    List() = default;
    explicit List(std::vector<Value> items);
    /// Items are created one by one when they are read, and all at once when the list is changed or iterated over.
    explicit List(std::unique_ptr<const ItemSource> source);
    List(const List&) = delete;
    List& operator=(const List&) = delete;
    ~List() override;

    std::size_t size() const noexcept { return source_ ? source_->size() : items_.size(); }
    const std::vector<Value>& items() const
    {
        if (source_)
            settle();
        return items_;
    }
    Value operator[](std::size_t index) const { return source_ ? source_->item(index) : items_[index]; }
    void replace(std::size_t index, Value value)
    {
        items();
        items_[index] = std::move(value);
    }
    void reserve(std::size_t count);
    void append(Value value);
    void prepend(Value value);

private:
    void clear() noexcept override;
    void settle() const;
    void charge() const;

    mutable std::unique_ptr<const ItemSource> source_; // until the list is settled
    mutable std::vector<Value> items_;
    mutable std::size_t charged_ = 0;
};

/// A record: labels and values in the order written. Records are small, so a label is found by linear search.
class Record final : public Container {
public:
    struct Field {
        Symbol label;
        Value value;
    };

    Record() = default;
    Record(const Record&) = delete;
    Record& operator=(const Record&) = delete;
    ~Record() override;

    std::size_t size() const noexcept { return fields_.size(); }
    const std::vector<Field>& fields() const noexcept { return fields_; }
    /// Null when there is no such label.
    const Value* find(Symbol label) const noexcept;
    /// Replaces the value of the label, or adds it at the end.
    void set(Symbol label, Value value);
    /// Adds a field only where the label is new.
    void addMissing(Symbol label, const Value& value);

private:
    void clear() noexcept override;
    void add(Symbol label, Value value);

    std::vector<Field> fields_;
    std::size_t charged_ = 0;
};

} // namespace mervo::applescript
