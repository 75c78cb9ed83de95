#include "platform/linux/keychain/KeychainModule.h"

#include <chrono>
#include <condition_variable>
#include <libsecret/secret.h>
#include <memory>
#include <mutex>
#include <thread>

namespace mervo::platform::keychain {
namespace {

constexpr std::chrono::seconds kPatience{60}; // for a person who is asked to unlock a keyring

struct Unref {
    void operator()(gpointer object) const { g_object_unref(object); }
};
struct FreeError {
    void operator()(GError* error) const { g_error_free(error); }
};
struct FreeTable {
    void operator()(GHashTable* table) const { g_hash_table_unref(table); }
};
struct FreeItems {
    void operator()(GList* items) const { g_list_free_full(items, g_object_unref); }
};
using Service = std::unique_ptr<SecretService, Unref>;
using Items = std::unique_ptr<GList, FreeItems>;

/// Gives up what it guards when the time is over.
class Patience {
public:
    Patience()
        : watch_([this] {
            std::unique_lock lock(mutex_);
            if (!ended_.wait_for(lock, kPatience, [this] { return isOver_; }))
                g_cancellable_cancel(cancellable_.get());
        })
    {
    }
    ~Patience()
    {
        {
            const std::scoped_lock lock(mutex_);
            isOver_ = true;
        }
        ended_.notify_one();
        watch_.join();
    }
    Patience(const Patience&) = delete;
    Patience& operator=(const Patience&) = delete;
    GCancellable* get() const { return cancellable_.get(); }

private:
    std::unique_ptr<GCancellable, Unref> cancellable_{g_cancellable_new()};
    std::mutex mutex_;
    std::condition_variable ended_;
    bool isOver_ = false;
    std::thread watch_;
};

const SecretSchema* schema()
{
    // Items are found by their attributes alone, also those that other programs made.
    static const SecretSchema shape = [] {
        SecretSchema made{};
        made.name = "org.freedesktop.Secret.Generic";
        made.flags = SECRET_SCHEMA_DONT_MATCH_NAME;
        made.attributes[0] = {"service", SECRET_SCHEMA_ATTRIBUTE_STRING};
        made.attributes[1] = {"account", SECRET_SCHEMA_ATTRIBUTE_STRING};
        return made;
    }();
    return &shape;
}

std::unique_ptr<GHashTable, FreeTable> attributes(const std::string& service, const std::string& account)
{
    return std::unique_ptr<GHashTable, FreeTable>(secret_attributes_build(
        schema(), "service", service.c_str(), "account", account.c_str(), static_cast<char*>(nullptr)));
}

Status statusOf(GError* raw)
{
    const std::unique_ptr<GError, FreeError> error(raw);
    if (!error)
        return kSuccess;
    if (g_error_matches(error.get(), SECRET_ERROR, SECRET_ERROR_IS_LOCKED)
        || g_error_matches(error.get(), G_IO_ERROR, G_IO_ERROR_CANCELLED))
        return kLocked;
    if (error->domain == SECRET_ERROR)
        return kRefused;
    return kNotAvailable;
}

Service connect(const Patience& patience, Status& status)
{
    GError* error = nullptr;
    Service service(secret_service_get_sync(SECRET_SERVICE_OPEN_SESSION, patience.get(), &error));
    status = statusOf(error);
    return service;
}

Items search(SecretService* service, const std::string& name, const std::string& account, int flags,
    const Patience& patience, Status& status)
{
    GError* error = nullptr;
    Items items(secret_service_search_sync(service, schema(), attributes(name, account).get(),
        static_cast<SecretSearchFlags>(flags), patience.get(), &error));
    status = statusOf(error);
    if (status == kSuccess && !items)
        status = kNotFound;
    return items;
}

class SecretServiceBackend final : public Backend {
public:
    Status set(const std::string& service, const std::string& account, const std::string& label,
        const Secret& secret) const override
    {
        const Patience patience;
        Status status = kSuccess;
        const Service connection = connect(patience, status);
        if (!connection)
            return status;
        const std::unique_ptr<SecretValue, void (*)(SecretValue*)> value(
            secret_value_new(secret.data(), static_cast<gssize>(secret.size()), "text/plain"),
            [](SecretValue* held) { secret_value_unref(held); });
        GError* error = nullptr;
        secret_service_store_sync(connection.get(), schema(), attributes(service, account).get(),
            SECRET_COLLECTION_DEFAULT, label.c_str(), value.get(), patience.get(), &error);
        return statusOf(error);
    }

    Found get(const std::string& service, const std::string& account) const override
    {
        const Patience patience;
        Found found;
        const Service connection = connect(patience, found.status);
        if (!connection)
            return found;
        const Items items = search(connection.get(), service, account,
            SECRET_SEARCH_UNLOCK | SECRET_SEARCH_LOAD_SECRETS, patience, found.status);
        if (!items)
            return found;
        auto* item = static_cast<SecretItem*>(items->data);
        const std::unique_ptr<SecretValue, void (*)(SecretValue*)> value(
            secret_item_get_secret(item), [](SecretValue* held) {
                if (held != nullptr)
                    secret_value_unref(held);
            });
        if (!value)
            return {secret_item_get_locked(item) != FALSE ? kLocked : kRefused, {}};
        gsize size = 0;
        const char* bytes = secret_value_get(value.get(), &size);
        found.secret = Secret({bytes, size});
        return found;
    }

    Status find(const std::string& service, const std::string& account) const override
    {
        const Patience patience;
        Status status = kSuccess;
        const Service connection = connect(patience, status);
        if (connection)
            search(connection.get(), service, account, SECRET_SEARCH_NONE, patience, status);
        return status;
    }

    Status remove(const std::string& service, const std::string& account) const override
    {
        const Patience patience;
        Status status = kSuccess;
        const Service connection = connect(patience, status);
        if (!connection)
            return status;
        GError* error = nullptr;
        const bool removed = secret_service_clear_sync(
                                 connection.get(), schema(), attributes(service, account).get(), patience.get(), &error)
            != FALSE;
        status = statusOf(error);
        return status == kSuccess && !removed ? kNotFound : status;
    }
};

} // namespace

const Backend* mervoKeychain()
{
    static const SecretServiceBackend backend;
    return &backend;
}

} // namespace mervo::platform::keychain
