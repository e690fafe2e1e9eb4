#include "editors/TWRecordEditor.h"

void TWRecordEditor::addPaths(const std::vector<std::string>& paths)
{
    for (const auto& path : paths)
        addPath(path);
}

void TWRecordEditor::askToApplyDefaults(TWAlerts& alerts, const TWAlert& question, const char* problemTitle)
{
    alerts.show(question, [this, &alerts, problemTitle](TWAnswer answer) {
        if (answer != TWAnswer::Default)
            return;
        if (const auto problem = applyDefaults(); !problem.empty())
            alerts.show({ problemTitle, problem, "OK", "" }, [](TWAnswer) {});
    });
}
