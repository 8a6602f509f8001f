#include "Exporter.h"

#include "Answers.h"
#include "ChoicesWatch.h"
#include "ExportModule.h"
#include "OpenDisplay.h"
#include "Problem.h"
#include "ReducePicture.h"
#include "StatusText.h"

#include <filesystem>

namespace gif89 {
namespace {

const ExportModule& TheModule() {
    static const ExportModule module(ExportModule::DefaultPath());
    return module;
}

/// The picture as it goes through the module; the window goes on showing the original.
struct Prepared {
    Picture picture;
    Plan plan;
};

// What was wished before is wished of the mode that is set now.
Prepared Prepare(const ExportTask& task, Wishes wishes) {
    wishes.mode = task.mode;
    Picture picture = CopyPicture(task.original);
    ApplyWishes(picture, wishes);
    auto planned = MakePlan(picture, wishes);
    if (const auto* const refusal = std::get_if<Refusal>(&planned))
        throw Problem(RefusalText(*refusal).toStdString(), ProblemKind::usage);
    Plan plan = std::get<Plan>(std::move(planned));
    BringIntoShape(picture, plan);
    if (plan.way == Way::reduced) picture = ReducePicture(picture, plan.reduction);
    return {std::move(picture), std::move(plan)};
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

void CheckWishes(const ExportTask& task, const Wishes& wishes) {
    Prepare(task, wishes);
}

std::optional<Exported> ExportWithDialogs(const ExportTask& task) {
    const Prepared prepared = Prepare(task, {.leavesToModule = true});
    const DisplayParts display = OpenDisplay();
    ChoicesWatch watch(*display.events, display.files, prepared.picture);
    try {
        SavedGif saved = Save(task, prepared.picture, watch.User());
        // A table made for this picture has an order that another one's would not have.
        const bool madeTable = prepared.plan.way == Way::fewColors;
        Wishes wishes = watch.Choices(saved.gif, madeTable ? ChoicesWatch::Marks::asColors
                                                           : ChoicesWatch::Marks::asNumbers);
        return Exported{std::move(saved), std::move(wishes)};
    } catch (const Problem& problem) {
        if (problem.Kind() == ProblemKind::cancelled) return std::nullopt;
        throw;
    }
}

SavedGif ExportWithWishes(const ExportTask& task, const Wishes& wishes) {
    const Prepared prepared = Prepare(task, wishes);
    Answers answers(prepared.plan);
    try {
        return Save(task, prepared.picture, answers.User());
    } catch (const Problem&) {
        answers.ThrowFailure();
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
