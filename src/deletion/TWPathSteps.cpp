#include "deletion/TWPathSteps.h"

#include "support/TWPath.h"

#include <deque>
#include <filesystem>

namespace {

constexpr int MostLinks = 40; // as many as the system follows

std::deque<std::string> componentsOf(const std::string& path)
{
    std::deque<std::string> components;
    for (const auto& component : std::filesystem::path(path).relative_path()) {
        if (!component.empty() && component != ".")
            components.push_back(component.string());
    }
    return components;
}

}

std::vector<TWPathStep> TWPathSteps(const TWFileSystem& fileSystem, const std::string& path,
    const std::function<TWFileLook(const std::string& path)>& look)
{
    auto components = componentsOf(path);
    std::vector<TWPathStep> steps{ { "/", look("/"), components.empty() } };
    std::string reached = "/";
    for (int links = 0; !components.empty();) {
        const auto name = components.front();
        components.pop_front();
        if (name == "..") {
            reached = TWPath::parent(reached);
            steps.push_back({ reached, look(reached), components.empty() });
            continue;
        }
        const auto next = TWPath::join(reached, name);
        steps.push_back({ next, look(next), components.empty() });
        if (!steps.back().isLink()) {
            reached = next;
            continue;
        }
        const auto target = fileSystem.linkTarget(next);
        if (!target || ++links > MostLinks)
            break;
        if (target->starts_with('/'))
            reached = "/";
        auto targets = componentsOf(*target);
        components.insert(components.begin(), targets.begin(), targets.end());
    }
    return steps;
}
