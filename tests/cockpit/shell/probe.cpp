/// The desktop's side of the cockpit on a line: reads one JSON object a line, does what "do" says, and prints one JSON
/// object for each answer and each thing that happens.
///
///     desktop-probe <program that a log-in starts>
#include "platform/desktop/Desktop.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QSocketNotifier>

#include <cstdio>
#include <functional>
#include <iostream>
#include <map>
#include <nlohmann/json.hpp>
#include <string>

namespace {

using nlohmann::json;

void say(const json& what)
{
    std::cout << what.dump() << std::endl;
}

mervo::platform::Notification notification(const json& line)
{
    mervo::platform::Notification note;
    note.id = line.at("id");
    note.title = line.at("title");
    note.body = line.value("body", "");
    note.context = line.value("context", "");
    note.hasSound = line.value("sound", true);
    for (const json& action : line.value("actions", json::array()))
        note.actions.push_back({action.at(0), action.at(1)});
    return note;
}

void sayLogin(const mervo::platform::LoginItem& item)
{
    say({{"login", item.isEnabled()}});
}

void setLogin(mervo::platform::LoginItem& item, bool enabled)
{
    try {
        item.setEnabled(enabled);
    } catch (const std::runtime_error& failure) {
        say({{"failure", failure.what()}});
    }
    sayLogin(item);
}

using Commands = std::map<std::string, std::function<void(const json&)>>;

Commands commands(mervo::platform::Desktop& desktop)
{
    return {{"post", [&](const json& line) { desktop.notifier->post(notification(line)); }},
        {"remove", [&](const json& line) { desktop.notifier->remove(line.at("id")); }},
        {"badge", [&](const json& line) { desktop.workspace->setBadge(line.at("label")); }},
        {"reveal", [&](const json& line) { desktop.workspace->revealFile(line.at("file").get<std::string>()); }},
        {"file",
            [&](const json& line) {
                say({{"opened", desktop.workspace->openFile(line.at("file").get<std::string>())}});
            }},
        {"url",
            [&](const json& line) {
                say({{"opened", desktop.workspace->openUrl(line.at("url"))}});
            }},
        {"login", [&](const json& line) { setLogin(*desktop.loginItem, line.at("on")); }},
        {"login?", [&](const json&) { sayLogin(*desktop.loginItem); }},
        {"remember", [&](const json& line) { desktop.defaults->setBoolean(line.at("key").get<std::string>(), true); }},
        {"recall", [&](const json& line) {
             say({{"default", desktop.defaults->boolean(line.at("key").get<std::string>())}});
         }}};
}

} // namespace

int main(int count, char** words)
{
    std::ios::sync_with_stdio(false);
    const QGuiApplication application(count, words);
    mervo::platform::Desktop desktop = mervo::platform::connectDesktop(words[1]);
    desktop.notifier->onResponse = [](const std::string& action, const std::string& context) {
        say({{"action", action}, {"context", context}});
    };
    desktop.appearance->onChange = [&desktop] {
        say({{"dark", desktop.appearance->isDark()}, {"animated", desktop.appearance->isAnimated()}});
    };
    const Commands known = commands(desktop);
    QSocketNotifier input(0, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &application, [&known] {
        do { // the stream may have read more than a line
            std::string text;
            if (!std::getline(std::cin, text))
                return QCoreApplication::quit();
            const json line = json::parse(text);
            known.at(line.at("do"))(line);
        } while (std::cin.rdbuf()->in_avail() > 0);
    });
    say({{"ready", true}});
    return QGuiApplication::exec();
}
