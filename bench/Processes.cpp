#include "bench/Child.h"
#include "bench/Measure.h"

#include <filesystem>
#include <stdexcept>

namespace mervo::bench {
namespace {

class Spawn final : public Measure {
public:
    explicit Spawn(const Words& command)
        : command_(command)
    {
    }

    Sample sample() override
    {
        Sample sample;
        sample.wall = timed([&] { sample.cpu = Child(command_).finish(); });
        return sample;
    }

private:
    Words command_;
};

class Fresh final : public Measure {
public:
    explicit Fresh(const Words& words)
        : folder_(words.at(0))
        , spawn_(Words(words.begin() + 1, words.end()))
    {
    }

    Sample sample() override
    {
        std::filesystem::remove_all(folder_);
        return spawn_.sample();
    }

private:
    std::filesystem::path folder_;
    Spawn spawn_;
};

class After final : public Measure {
public:
    explicit After(const Words& words)
        : preparation_({"sh", "-c", words.at(0)})
        , spawn_(Words(words.begin() + 1, words.end()))
    {
    }

    Sample sample() override
    {
        Child(preparation_).finish();
        return spawn_.sample();
    }

private:
    Words preparation_;
    Spawn spawn_;
};

constexpr std::string_view kInitialize = R"({"jsonrpc":"2.0","id":0,"method":"initialize","params":{)"
                                         R"("protocolVersion":"2025-06-18","capabilities":{},)"
                                         R"("clientInfo":{"name":"bench","version":"1"}}})"
                                         "\n";
constexpr std::string_view kInitialized = R"({"jsonrpc":"2.0","method":"notifications/initialized"})"
                                          "\n";

void insist(const std::string& answer, const std::string& part = "\"result\":")
{
    if (answer.find(part) == std::string::npos)
        throw std::runtime_error("the server answered " + answer.substr(0, 500));
}

class Greet final : public Measure {
public:
    explicit Greet(const Words& command)
        : command_(command)
    {
    }

    Sample sample() override
    {
        Sample sample;
        std::unique_ptr<Child> child;
        std::string answer;
        sample.wall = timed([&] {
            child = std::make_unique<Child>(command_);
            child->send(kInitialize);
            answer = child->answer();
        });
        insist(answer);
        sample.cpu = child->finish();
        return sample;
    }

private:
    Words command_;
};

/// The request's "@" stands for a number that grows.
class Serve final : public Measure {
public:
    explicit Serve(const Words& words)
        : expected_(words.at(0))
        , request_(words.at(1))
        , number_(request_.find('@'))
        , child_(Words(words.begin() + 2, words.end()))
    {
        child_.send(kInitialize);
        insist(child_.answer());
        child_.send(kInitialized);
        residentAtStart_ = child_.statusKib("VmRSS");
    }

    Sample sample() override
    {
        std::string request = request_ + "\n";
        if (number_ != std::string::npos)
            request.replace(number_, 1, std::to_string(++count_));
        std::string answer;
        Sample sample;
        const std::int64_t before = child_.cpu();
        sample.wall = timed([&] {
            child_.send(request);
            answer = child_.answer();
        });
        sample.cpu = child_.cpu() - before;
        insist(answer, expected_);
        return sample;
    }

    std::map<std::string, std::int64_t> notes() override
    {
        return {{"resident_kib_at_start", residentAtStart_}, {"resident_kib", child_.statusKib("VmRSS")}};
    }

private:
    std::string expected_; // in every answer
    std::string request_;
    std::size_t number_;
    int count_ = 0;
    std::int64_t residentAtStart_ = 0;
    Child child_;
};

} // namespace

std::unique_ptr<Measure> makeSpawn(const Words& command)
{
    return std::make_unique<Spawn>(command);
}
std::unique_ptr<Measure> makeFresh(const Words& words)
{
    return std::make_unique<Fresh>(words);
}
std::unique_ptr<Measure> makeAfter(const Words& preparationAndCommand)
{
    return std::make_unique<After>(preparationAndCommand);
}

std::unique_ptr<Measure> makeGreet(const Words& words)
{
    return std::make_unique<Greet>(words);
}
std::unique_ptr<Measure> makeServe(const Words& words)
{
    return std::make_unique<Serve>(words);
}

} // namespace mervo::bench
