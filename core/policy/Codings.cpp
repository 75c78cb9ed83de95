/// The JSON codings of the gate's records. An absent text is left out; a member of the wrong type, or one that is
/// missing and must be there, makes the whole object nothing; further members are ignored.
#include "core/foundation/Json.h"
#include "core/policy/AuditLog.h"
#include "core/policy/PolicyRule.h"

#include <algorithm>
#include <initializer_list>
#include <nlohmann/json.hpp>

namespace mervo {

namespace {

using Json = nlohmann::ordered_json;

std::string compact(const Json& object)
{
    return compactJson(object);
}

/// Takes the members of an object one by one; remembers whether all were there and right.
class Members {
public:
    explicit Members(std::string_view json)
        : object_(parsedJson<Json>(json))
        , good_(object_.is_object())
    {
    }
    bool good() const { return good_; }

    void take(const char* key, std::string& field) { takeAs(key, field); }
    void take(const char* key, std::optional<std::string>& field)
    {
        if (const Json* value = find(key); value != nullptr && !value->is_null())
            takeAs(key, field.emplace());
    }
    void take(const char* key, bool& field)
    {
        const Json* value = find(key);
        good_ = good_ && value != nullptr && value->is_boolean();
        if (good_)
            field = value->get<bool>();
    }
    template <typename Map>
    requires requires { typename Map::mapped_type; }
    void take(const char* key, Map& field)
    {
        const Json* value = find(key);
        good_ = good_ && value != nullptr && value->is_object();
        for (auto entry = good_ ? value->begin() : Json::const_iterator(); good_ && entry != value->end(); ++entry) {
            good_ = entry->is_string();
            if (good_)
                field[entry.key()] = entry->template get<std::string>();
        }
    }
    /// One of the values, by its raw word.
    template <typename Value>
    void take(const char* key, Value& field, std::initializer_list<Value> all)
    {
        std::string word;
        takeAs(key, word);
        const auto found = std::find_if(all.begin(), all.end(), [&](Value value) { return rawValue(value) == word; });
        good_ = good_ && found != all.end();
        if (good_)
            field = *found;
    }

private:
    const Json* find(const char* key) const
    {
        if (!object_.is_object())
            return nullptr;
        const auto found = object_.find(key);
        return found == object_.end() ? nullptr : &*found;
    }
    void takeAs(const char* key, std::string& field)
    {
        const Json* value = find(key);
        good_ = good_ && value != nullptr && value->is_string();
        if (good_)
            field = value->get<std::string>();
    }

    Json object_;
    bool good_;
};

} // namespace

std::string PolicyRule::encode() const
{
    Json object{{"id", id}, {"enabled", enabled}};
    if (account)
        object["account"] = *account;
    object["toolPattern"] = toolPattern;
    object["match"] = match;
    object["decision"] = rawValue(decision);
    object["source"] = rawValue(source);
    object["createdAt"] = createdAt;
    return compact(object);
}

std::optional<PolicyRule> PolicyRule::decode(std::string_view json)
{
    Members members(json);
    PolicyRule rule;
    members.take("id", rule.id);
    members.take("enabled", rule.enabled);
    members.take("account", rule.account);
    members.take("toolPattern", rule.toolPattern);
    members.take("match", rule.match);
    members.take("decision", rule.decision, {Decision::allow, Decision::deny, Decision::ask});
    members.take("source", rule.source, {Source::user, Source::learned});
    members.take("createdAt", rule.createdAt);
    return members.good() ? std::optional(std::move(rule)) : std::nullopt;
}

std::string AuditEntry::encode() const
{
    Json object{{"timestamp", timestamp}, {"actor", actor}, {"action", action}};
    if (accountId)
        object["accountId"] = *accountId;
    object["details"] = details;
    object["outcome"] = outcome;
    if (reason)
        object["reason"] = *reason;
    return compact(object);
}

std::optional<AuditEntry> AuditEntry::decode(std::string_view json)
{
    Members members(json);
    AuditEntry entry;
    members.take("timestamp", entry.timestamp);
    members.take("actor", entry.actor);
    members.take("action", entry.action);
    members.take("accountId", entry.accountId);
    members.take("details", entry.details);
    members.take("outcome", entry.outcome);
    members.take("reason", entry.reason);
    return members.good() ? std::optional(std::move(entry)) : std::nullopt;
}

} // namespace mervo
