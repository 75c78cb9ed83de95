#pragma once

#include <QAbstractItemModel>
#include <QModelIndex>
#include <QString>

#include <algorithm>
#include <set>
#include <utility>
#include <vector>

namespace mervo {

/// The rows of a list model, updated one by one: rows that stay are kept, and with them typed text, focus and the
/// scroll position. Rows with the same `identity()` are told apart by their order.
template <typename Model, typename Row>
class Rows {
public:
    const std::vector<Row>& all() const { return rows_; }
    std::vector<Row>& all() { return rows_; }

    /// `changed(number)` is called for a row with the same identity and new content.
    template <typename Changed>
    void show(Model& model, std::vector<Row> wanted, Changed&& changed)
    {
        removeAllBut(model, wanted);
        for (std::size_t at = 0; at < wanted.size(); ++at) {
            if (at == rows_.size() || rows_[at].identity() != wanted[at].identity())
                bringTo(model, at, wanted[at]);
            if (!(rows_[at] == wanted[at])) {
                rows_[at] = std::move(wanted[at]);
                changed(static_cast<int>(at));
            }
        }
        removeFrom(model, wanted.size());
    }

private:
    void removeFrom(Model& model, std::size_t first)
    {
        if (first == rows_.size())
            return;
        model.beginRemoveRows({}, static_cast<int>(first), static_cast<int>(rows_.size()) - 1);
        rows_.erase(rows_.begin() + static_cast<std::ptrdiff_t>(first), rows_.end());
        model.endRemoveRows();
    }

    void removeAllBut(Model& model, const std::vector<Row>& wanted)
    {
        std::set<QString> kept;
        for (const Row& row : wanted)
            kept.insert(row.identity());
        for (std::size_t end = rows_.size(); end > 0; --end) {
            if (kept.contains(rows_[end - 1].identity()))
                continue;
            const int at = static_cast<int>(end) - 1;
            model.beginRemoveRows({}, at, at);
            rows_.erase(rows_.begin() + at);
            model.endRemoveRows();
        }
    }

    void bringTo(Model& model, std::size_t at, const Row& row)
    {
        const auto from = std::find_if(rows_.begin() + static_cast<std::ptrdiff_t>(at), rows_.end(),
            [&](const Row& other) { return other.identity() == row.identity(); });
        const auto place = rows_.begin() + static_cast<std::ptrdiff_t>(at);
        const int number = static_cast<int>(at);
        if (from == rows_.end()) {
            model.beginInsertRows({}, number, number);
            rows_.insert(place, row);
            model.endInsertRows();
        } else {
            const int source = static_cast<int>(from - rows_.begin());
            model.beginMoveRows({}, source, source, {}, number);
            std::rotate(place, from, from + 1);
            model.endMoveRows();
        }
    }

    std::vector<Row> rows_;
};

} // namespace mervo
