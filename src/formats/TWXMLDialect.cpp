#include "formats/TWXMLDialect.h"

#include <algorithm>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace {

using Key = TWEntryCuts::Key;
constexpr Key NoKey = TWEntryCuts::NoKey;

std::string_view attribute(std::string_view name, TWXMLDialect::Attributes attributes)
{
    for (; *attributes; attributes += 2) {
        if (*attributes == name)
            return attributes[1];
    }
    return {};
}

// What is said about one element: its attributes and its text. Needs no more than what is shown of it.
void addText(std::string_view text, std::string& all)
{
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    if (first == text.npos || all.size() > TWKeyCollector::MaximumValueBytes)
        return;
    if (!all.empty() && (first > 0 || all.back() == ';' || all.back() == ':'))
        all += ' ';
    all += text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

// Any XML file: an entry is an element with the key's name. A collected one has elements inside.
class ElementDialect : public TWXMLDialect {
public:
    explicit ElementDialect(TWEntryCuts& cuts)
        : cuts_(cuts)
    {
    }

    std::string_view formatName() const override { return "XML"; }
    bool wantsText() const override { return cuts_.collector(); }

    bool start(std::string_view name, Attributes attributes, std::size_t begin) override
    {
        const bool isRoot = cutsElement_.empty();
        const Key key = isRoot ? NoKey : keyOf(name, attributes);
        if (key != NoKey)
            cuts_.open(key, begin);
        cutsElement_.push_back(key != NoKey);
        if (cuts_.collector() && !isRoot)
            reportStart(name, attributes);
        return true;
    }

    bool end(std::string_view name, std::size_t end) override
    {
        if (cutsElement_.back())
            cuts_.close(end);
        cutsElement_.pop_back();
        if (cuts_.collector() && !cutsElement_.empty())
            reportEnd(name);
        return true;
    }

    bool text(std::string_view text) override
    {
        addText(text, text_);
        return true;
    }

protected:
    virtual Key keyOf(std::string_view name, Attributes) const { return cuts_.find(name); }

    // Whether an element has elements inside is known only when the next one begins or it ends.
    virtual void reportStart(std::string_view name, Attributes attributes)
    {
        if (isLeaf_) {
            collector().name(leaf_);
            collector().begin(true);
            collector().name("");
            if (!text_.empty())
                collector().value(text_);
        }
        isLeaf_ = true;
        leaf_ = name;
        text_.clear();
        for (; *attributes; attributes += 2)
            addText(std::string(attributes[0]) + "=" + attributes[1] + ";", text_);
    }

    virtual void reportEnd(std::string_view name)
    {
        if (isLeaf_) {
            collector().name(name);
            collector().value(text_);
        } else {
            collector().end();
        }
        isLeaf_ = false;
        text_.clear();
    }

    const TWEntryCuts& cuts() const { return cuts_; }
    TWKeyCollector& collector() const { return *cuts_.collector(); }
    std::string takeText() { return std::exchange(text_, {}); }

private:
    TWEntryCuts& cuts_;
    std::vector<bool> cutsElement_; // for each open element
    bool isLeaf_ = false; // so far, the innermost open element has no elements inside
    std::string leaf_; // its name
    std::string text_; // what is said about it
};

// LibreOffice's registry: an entry is an <item> whose path has the key as a quoted name, as in Info['PickList']/Order.
class RegistryDialect final : public ElementDialect {
public:
    using ElementDialect::ElementDialect;

    std::string_view formatName() const override { return "LibreOffice registry"; }

private:
    // Calls the function with each quoted name of an item's path.
    template <typename Function>
    static void forEachName(Attributes attributes, const Function& function)
    {
        std::string_view path = attribute("oor:path", attributes);
        for (std::size_t begin = path.find_first_of("'\""); begin != path.npos; begin = path.find_first_of("'\"")) {
            const std::size_t end = path.find(path[begin], begin + 1);
            if (end == path.npos)
                break;
            if (path.substr(end + 1).starts_with(']'))
                function(path.substr(begin + 1, end - begin - 1));
            path.remove_prefix(end + 1);
        }
    }

    Key keyOf(std::string_view name, Attributes attributes) const override
    {
        Key key = NoKey;
        if (name == "item")
            forEachName(attributes, [&](std::string_view part) { key = std::min(key, cuts().find(part)); });
        return key;
    }

    // A collected name has one value for each item, because a list is spread over many items.
    void reportStart(std::string_view name, Attributes attributes) override
    {
        if (name == "item") {
            key_.clear();
            takeText();
            forEachName(attributes, [&](std::string_view part) {
                if (key_.empty() && collector().matches(part))
                    key_ = part;
            });
        }
        const std::string_view node = attribute("oor:name", attributes);
        if (!node.empty())
            text(" " + std::string(node) + ":");
    }

    void reportEnd(std::string_view name) override
    {
        if (name == "item" && !key_.empty())
            collector().add(key_, takeText());
    }

    std::string key_; // of the current item
};

// XBEL: an entry is a <bookmark> that was made by an application, or belongs to a group, of the key's name.
class BookmarkDialect final : public TWXMLDialect {
public:
    explicit BookmarkDialect(TWEntryCuts& cuts)
        : cuts_(cuts)
    {
    }

    std::string_view formatName() const override { return "XBEL"; }
    bool wantsText() const override { return true; }

    bool start(std::string_view name, Attributes attributes, std::size_t begin) override
    {
        if (name == "bookmark") {
            begin_ = begin;
            key_ = NoKey;
        }
        const std::string_view plain = withoutPrefix(name);
        if (plain == "application")
            key_ = std::min(key_, cuts_.find(attribute("name", attributes)));
        isGroup_ = plain == "group";
        group_.clear();
        if (cuts_.collector()) {
            if (name == "bookmark") {
                names_.clear();
                address_ = attribute("href", attributes);
            } else if (plain == "application") {
                report(attribute("name", attributes));
            }
        }
        return true;
    }

    bool end(std::string_view name, std::size_t end) override
    {
        if (isGroup_)
            key_ = std::min(key_, cuts_.find(group_));
        if (isGroup_ && cuts_.collector())
            report(group_);
        isGroup_ = false;
        if (name == "bookmark" && key_ != NoKey) {
            cuts_.open(key_, begin_);
            cuts_.close(end);
            key_ = NoKey;
        }
        return true;
    }

    bool text(std::string_view text) override
    {
        if (isGroup_)
            group_ += text;
        return true;
    }

private:
    static std::string_view withoutPrefix(std::string_view name) { return name.substr(name.find(':') + 1); }

    // A collected name has the addresses of its bookmarks as values.
    void report(std::string_view name)
    {
        if (cuts_.collector()->matches(name) && names_.insert(std::string(name)).second)
            cuts_.collector()->add(name, address_);
    }

    TWEntryCuts& cuts_;
    std::size_t begin_ = 0;
    std::string address_; // of the current bookmark, and the names reported for it
    std::set<std::string> names_;
    Key key_ = NoKey; // of the current bookmark
    bool isGroup_ = false; // inside a <group>
    std::string group_;
};

// Property list: an entry is a <key> and the value after it. The root must be a dictionary.
class PropertyListDialect final : public TWXMLDialect {
public:
    explicit PropertyListDialect(TWEntryCuts& cuts)
        : cuts_(cuts)
    {
    }

    std::string_view formatName() const override { return "XML property list"; }
    bool wantsText() const override { return true; }

    bool start(std::string_view name, Attributes, std::size_t begin) override
    {
        if (isLeaf_)
            return false;
        const bool isDictionary = name == "dict";
        if (open_.empty()) { // the root element itself
            open_.push_back({ Expects::Root });
            return true;
        }
        Container& outer = open_.back();
        if (name == "key") {
            begin_ = begin;
            text_.clear();
            isLeaf_ = true;
            return outer.expects == Expects::Name;
        }
        if (outer.expects == Expects::Name || outer.expects == Expects::Nothing
            || (outer.expects == Expects::Root && !isDictionary))
            return false;
        if (isDictionary || name == "array")
            open_.push_back({ isDictionary ? Expects::Name : Expects::Item });
        else
            isLeaf_ = true;
        return isDictionary || name == "array" || isScalar(name);
    }

    bool end(std::string_view name, std::size_t end) override
    {
        if (name == "key") {
            endKey();
            return true;
        }
        if (!isLeaf_) {
            const Expects missing = open_.back().expects;
            if (missing == Expects::Value || missing == Expects::Root)
                return false;
            open_.pop_back();
        }
        isLeaf_ = false;
        endValue(end);
        return true;
    }

    bool text(std::string_view text) override
    {
        if (!isLeaf_)
            return text.find_first_not_of(" \t\r\n") == text.npos;
        if (open_.back().expects == Expects::Name)
            text_ += text;
        return true;
    }

private:
    enum class Expects { Root, Nothing, Name, Value, Item };

    struct Container {
        Expects expects;
        bool cutsEntry = false;
    };

    static bool isScalar(std::string_view name)
    {
        static constexpr std::string_view Names[]{ "string", "integer", "real", "true", "false", "date", "data" };
        return std::find(std::begin(Names), std::end(Names), name) != std::end(Names);
    }

    void endKey()
    {
        const Key key = cuts_.find(text_);
        if (key != NoKey)
            cuts_.open(key, begin_);
        open_.back() = { Expects::Value, key != NoKey };
        isLeaf_ = false;
    }

    void endValue(std::size_t end)
    {
        if (open_.empty())
            return;
        Container& outer = open_.back();
        if (outer.cutsEntry)
            cuts_.close(end);
        if (outer.expects == Expects::Value)
            outer = { Expects::Name };
        else if (outer.expects == Expects::Root)
            outer.expects = Expects::Nothing;
    }

    TWEntryCuts& cuts_;
    std::vector<Container> open_;
    bool isLeaf_ = false; // inside an element that has text and no elements
    std::size_t begin_ = 0; // of the latest <key>
    std::string text_; // of the latest <key>
};

}

std::unique_ptr<TWXMLDialect> TWXMLDialect::make(std::string_view root, TWEntryCuts& cuts)
{
    if (root == "plist")
        return std::make_unique<PropertyListDialect>(cuts);
    if (root == "xbel")
        return std::make_unique<BookmarkDialect>(cuts);
    if (root == "oor:items")
        return std::make_unique<RegistryDialect>(cuts);
    return std::make_unique<ElementDialect>(cuts);
}
