#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// A key whose name suggests what it holds.
struct TWFoundKey {
    std::string key; // as TWFileFormats::cut() takes it
    std::vector<std::string> values; // for display: valid UTF-8; containers are written out
    friend bool operator==(const TWFoundKey&, const TWFoundKey&) = default;
};

// Collects the keys of one file that contain a keyword and whose value is a container, while a scanner reports what it
// meets in the order of the file. Nothing is collected inside such a key. Keywords are compared as bytes. Any thread.
// The keywords must outlive it.
class TWKeyCollector final {
public:
    // What is beyond these is left out. Names are never shortened because rules are made from them.
    static constexpr std::size_t MaximumKeys = 200;
    static constexpr std::size_t MaximumValues = 200; // of one key
    static constexpr std::size_t MaximumValueBytes = 500;
    static constexpr std::size_t MaximumNameBytes = 1000;
    static constexpr std::size_t MaximumPath = 64; // names

    explicit TWKeyCollector(const std::vector<std::string>& keywords)
        : keywords_(keywords)
    {
    }

    // True if a key of this name is collected.
    bool matches(std::string_view name) const;

    // The name of the value or the container that comes next. Both names are compared, and the first is collected.
    void name(std::string_view name, std::string_view unescaped);
    void name(std::string_view name) { this->name(name, name); }

    void value(std::string_view text);
    void begin(bool isDictionary);
    void end();

    // Ends containers and begins others, so that the path of names leads to what comes next.
    struct Step {
        std::string name;
        std::string unescaped;
        friend bool operator==(const Step&, const Step&) = default;
    };
    void enter(std::vector<Step> path);

    // Adds a value to the key of this name, wherever it was met before. Not called inside of containers.
    void add(std::string_view name, std::string_view text);

    // True inside a key that is collected.
    bool isInside() const { return !closers_.empty(); }

    const std::vector<TWFoundKey>& keys() const { return keys_; }
    std::vector<TWFoundKey> takeKeys() { return std::move(keys_); }

private:
    void beginItem();
    void append(std::string_view text);
    void finishValue();
    static void addValue(TWFoundKey& key, std::string text);

    const std::vector<std::string>& keywords_;
    std::vector<TWFoundKey> keys_;
    std::vector<Step> path_;
    std::string matched_; // the latest name if it matches
    std::string inner_; // the latest name inside a key
    std::string closers_; // the ends of the open containers from the collected one on
    bool needsComma_ = false;
    std::string value_; // the item of the collected key that is written out
};
