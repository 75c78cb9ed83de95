#include "platform/desk/settings/Configuration.h"

#include "platform/desk/settings/Places.h"
#include "platform/folders.h"
#include "platform/unicode.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fmt/format.h>
#include <fstream>
#include <iterator>
#include <pwd.h>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

#define TOML_HEADER_ONLY 1
#include <toml++/toml.h>

namespace mervo::desk {
namespace {

/// The file being read: knows how to complain about a place in it.
class Reader {
public:
    explicit Reader(const std::filesystem::path& file)
        : file_(file)
    {
    }

    [[noreturn]] void fail(const toml::node& at, std::string_view sentence) const
    {
        throw ConfigurationError(file_, static_cast<long>(at.source().begin.line), sentence);
    }

    void refuseUnknownKeys(
        const toml::table& table, const std::set<std::string_view>& known, std::string_view where) const
    {
        for (const auto& [key, value] : table) {
            if (!known.contains(key.str())) {
                throw ConfigurationError(file_, static_cast<long>(key.source().begin.line),
                    fmt::format("\"{}\" is not a known key {}.", key.str(), where));
            }
        }
    }

    std::string text(const toml::table& table, const char* key) const
    {
        const toml::node* node = table.get(key);
        return node == nullptr ? std::string() : oneLine(*node, key);
    }

    std::vector<std::string> texts(const toml::table& table, const char* key) const
    {
        std::vector<std::string> result;
        const toml::node* node = table.get(key);
        if (node == nullptr)
            return result;
        if (!node->is_array())
            fail(*node, fmt::format("\"{}\" must be a list of texts, such as [\"one\", \"two\"].", key));
        for (const toml::node& item : *node->as_array())
            result.push_back(oneLine(item, key));
        return result;
    }

private:
    std::string oneLine(const toml::node& node, const char* key) const
    {
        const auto value = node.value_exact<std::string>();
        if (!value)
            fail(node, fmt::format("\"{}\" must be a text in quotes.", key));
        if (value->empty())
            fail(node, fmt::format("\"{}\" is empty.", key));
        if (std::any_of(value->begin(), value->end(), [](unsigned char c) { return c < 0x20 || c == 0x7f; }))
            fail(node, fmt::format("\"{}\" holds a control character.", key));
        return *value;
    }

    const std::filesystem::path& file_;
};

bool looksLikeAddress(std::string_view text)
{
    const std::size_t at = text.rfind('@');
    return at != std::string_view::npos && at > 0 && at + 1 < text.size()
        && text.find_first_of(" ,;<>()[]\"\\") == std::string_view::npos && text.find('@') == at;
}

MailLayout readLayout(const Reader& read, const toml::table& table)
{
    const std::string word = read.text(table, "layout");
    if (word.empty() || word == "maildir++")
        return MailLayout::maildirPlusPlus;
    if (word == "nested")
        return MailLayout::nested;
    read.fail(*table.get("layout"), fmt::format("\"layout\" must be \"maildir++\" or \"nested\", not \"{}\".", word));
}

std::string readMailboxName(const Reader& read, const toml::table& table, const char* key)
{
    std::string name = read.text(table, key);
    if (name.starts_with('/') || name.ends_with('/') || name.find("//") != std::string::npos)
        read.fail(*table.get(key), fmt::format("\"{}\" has an empty part between its \"/\".", key));
    return name;
}

MailAccountSettings readMailAccount(const Reader& read, const toml::table& table)
{
    read.refuseUnknownKeys(table,
        {"name", "email", "path", "layout", "server", "sendmail", "drafts", "sent", "trash", "junk"},
        "of a mail account");
    for (const char* key : {"name", "email", "path"}) {
        if (!table.contains(key))
            read.fail(table, fmt::format("this mail account has no \"{}\".", key));
    }
    MailAccountSettings account;
    account.name = read.text(table, "name");
    if (account.name.find('/') != std::string::npos)
        read.fail(*table.get("name"), "\"name\" holds a \"/\", which an account's name must not.");
    account.addresses = read.texts(table, "email");
    if (account.addresses.empty())
        read.fail(*table.get("email"), "\"email\" needs at least one address.");
    for (const std::string& address : account.addresses) {
        if (!looksLikeAddress(address))
            read.fail(*table.get("email"), fmt::format("\"email\" holds \"{}\", which is no address.", address));
    }
    account.root = platform::expandTilde(read.text(table, "path"));
    if (!account.root.is_absolute())
        read.fail(*table.get("path"), "\"path\" must start with \"/\" or \"~/\".");
    account.layout = readLayout(read, table);
    account.server = read.text(table, "server");
    account.sendmail = read.texts(table, "sendmail");
    account.drafts = readMailboxName(read, table, "drafts");
    account.sent = readMailboxName(read, table, "sent");
    account.trash = readMailboxName(read, table, "trash");
    account.junk = readMailboxName(read, table, "junk");
    return account;
}

void readMail(const Reader& read, const toml::node& mail, std::vector<MailAccountSettings>& accounts)
{
    if (!mail.is_table())
        read.fail(mail, "\"mail\" must be a table; write accounts as [[mail.account]].");
    read.refuseUnknownKeys(*mail.as_table(), {"account"}, "of \"mail\"");
    const toml::node* list = mail.as_table()->get("account");
    if (list == nullptr)
        return;
    if (!list->is_array())
        read.fail(*list, "\"account\" must be a list; write each account under its own [[mail.account]].");
    std::set<std::string> names;
    for (const toml::node& item : *list->as_array()) {
        if (!item.is_table())
            read.fail(item, "\"account\" must be a list of tables; write [[mail.account]].");
        MailAccountSettings account = readMailAccount(read, *item.as_table());
        if (!names.insert(platform::foldCase(account.name)).second) {
            read.fail(*item.as_table()->get("name"),
                fmt::format("\"name\": there are two mail accounts named \"{}\".", account.name));
        }
        accounts.push_back(std::move(account));
    }
}

std::vector<std::string> readMessages(const Reader& read, const toml::node& messages)
{
    if (!messages.is_table())
        read.fail(messages, "\"messages\" must be a table; write [messages].");
    read.refuseUnknownKeys(*messages.as_table(), {"send"}, "of \"messages\"");
    return read.texts(*messages.as_table(), "send");
}

MailAccountSettings localAccount()
{
    const passwd* entry = getpwuid(getuid());
    MailAccountSettings account;
    account.name = "Local";
    account.addresses = {fmt::format("{}@localhost", entry != nullptr ? entry->pw_name : "user")};
    account.root = dataFolder() / "mail" / "Local";
    account.local = true;
    return account;
}

} // namespace

ConfigurationError::ConfigurationError(const std::filesystem::path& file, long line, std::string_view sentence)
    : std::runtime_error(line > 0 ? fmt::format("{}, line {}: {}", file.string(), line, sentence)
                                  : fmt::format("{}: {}", file.string(), sentence))
{
}

Configuration parseConfiguration(std::string_view text, const std::filesystem::path& file)
{
    Configuration result;
    result.file = file;
    const Reader read(file);
    try {
        const toml::table document = toml::parse(text, file.string());
        read.refuseUnknownKeys(document, {"mail", "messages"}, "of the desk");
        if (const toml::node* mail = document.get("mail"))
            readMail(read, *mail, result.mailAccounts);
        if (const toml::node* messages = document.get("messages"))
            result.messagesSend = readMessages(read, *messages);
    } catch (const toml::parse_error& error) {
        throw ConfigurationError(
            file, static_cast<long>(error.source().begin.line), fmt::format("{}.", error.description()));
    }
    if (result.mailAccounts.empty())
        result.mailAccounts.push_back(localAccount());
    return result;
}

Configuration loadConfiguration()
{
    const std::filesystem::path file = configurationFile();
    struct stat status { };
    if (stat(file.c_str(), &status) != 0) {
        if (errno == ENOENT || errno == ENOTDIR) {
            Configuration result = parseConfiguration("", file);
            result.file.clear();
            return result;
        }
        throw ConfigurationError(file, 0, fmt::format("the file cannot be read ({}).", std::strerror(errno)));
    }
    if (!S_ISREG(status.st_mode))
        throw ConfigurationError(file, 0, "this is not a file.");
    std::ifstream stream(file, std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(stream), {}};
    if (!stream.is_open() || stream.bad())
        throw ConfigurationError(file, 0, fmt::format("the file cannot be read ({}).", std::strerror(errno)));
    return parseConfiguration(text, file);
}

} // namespace mervo::desk
