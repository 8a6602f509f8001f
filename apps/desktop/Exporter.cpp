#include "Exporter.h"

#include "ChoicesWatch.h"
#include "ExportHost.h"
#include "ExportModule.h"
#include "OpenDisplay.h"

#include <filesystem>

namespace gif89 {
namespace {

const ExportModule& TheModule() {
    static const ExportModule module(ExportModule::DefaultPath());
    return module;
}

// The picture as it goes through the module; the window goes on showing the original.
Picture ShapedCopy(const ExportTask& task, const ExportChoices& choices = {}) {
    Picture picture = CopyPicture(task.original);
    Shape(picture, ShapingFor(choices, {.way = task.way}));
    return picture;
}

SavedGif Save(const ExportTask& task, const Picture& exported, const DialogUser& user) {
    const Destination destination = {{}, task.target, -1, Existing::replace};
    SaveChecks checks;
    checks.original = &task.original;
    checks.keepIndices = true;
    if (!task.source.empty()) checks.source = FileIdOf(task.source);
    checks.mayWrite = [&task](const std::string&) {
        if (task.working) task.working();
    };
    return SavePicture(TheModule(), exported, task.name, destination, user, checks);
}

} // namespace

void CheckChoices(const ExportTask& task, const ExportChoices& choices) {
    CheckChoices(ShapedCopy(task, choices), choices);
}

std::optional<Exported> ExportWithDialogs(const ExportTask& task) {
    const Picture exported = ShapedCopy(task);
    const DisplayParts display = OpenDisplay();
    ChoicesWatch watch(*display.events, display.files, exported);
    try {
        SavedGif saved = Save(task, exported, {&watch, &watch});
        // A table made for this picture has an order that another one's would not have.
        const bool madeTable = exported.kind != task.original.kind;
        ExportChoices choices = watch.Choices(
            saved.gif, madeTable ? ChoicesWatch::Marks::asColors : ChoicesWatch::Marks::asNumbers);
        return Exported{std::move(saved), std::move(choices)};
    } catch (const Problem& problem) {
        if (problem.what() == DescribeCode(userCanceledErr)) return std::nullopt;
        throw;
    }
}

SavedGif ExportWithChoices(const ExportTask& task, const ExportChoices& choices) {
    const Picture exported = ShapedCopy(task, choices);
    Operator user(exported, choices);
    try {
        return Save(task, exported, {&user.Events(), &user.Files()});
    } catch (const Problem&) {
        user.ThrowFailure();
        throw;
    }
}

void ShowModuleAbout() {
    EventSource* const before = SetEventSource(OpenDisplay().events);
    TheModule().Call(kSelectorAbout, nullptr, nullptr, nullptr);
    SetEventSource(before);
}

std::string ProposeTarget(const std::string& path, const std::string& name,
                          const std::string& folder) {
    const std::filesystem::path place =
        path.empty() ? std::filesystem::path(folder) : std::filesystem::path(path).parent_path();
    std::filesystem::path target = place / (name + ".gif");
    if (target == std::filesystem::path(path)) target = place / (name + "-2.gif");
    return target;
}

} // namespace gif89
