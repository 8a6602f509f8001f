#include "Document.h"

#include "CountColors.h"
#include "InputFile.h"
#include "Plan.h"
#include "Problem.h"
#include "ReadPicture.h"

#include <QObject>

#include <filesystem>
#include <new>
#include <thread>

namespace gif89 {
namespace {

std::shared_ptr<Document> Prepare(Picture picture, const std::string& name) {
    auto document = std::make_shared<Document>();
    document->name = name;
    document->image = ImageOf(picture);
    picture.visibleColors = CountColors(picture);
    document->fitsTable = std::holds_alternative<Plan>(MakePlan(picture, {.mode = Mode::indexed}));
    document->picture = std::move(picture);
    document->shown = ShownImage(document->image);
    return document;
}

ReadResult TryToRead(const std::string& path) {
    try {
        return {ReadDocument(path), {}};
    } catch (const std::bad_alloc&) {
        return {nullptr, "needs more memory than there is"};
    } catch (const std::exception& problem) {
        return {nullptr, problem.what()};
    }
}

} // namespace

DocumentPtr MakeDocument(Picture picture, const std::string& name) {
    return Prepare(std::move(picture), name);
}

DocumentPtr ReadDocument(const std::string& path) {
    InputFile file = InputFile::Open(path);
    auto document = Prepare(ReadPicture(file), std::filesystem::path(path).stem());
    document->path = path;
    return document;
}

BackgroundReader::BackgroundReader(QObject* receiver, std::function<void(ReadResult)> deliver)
    : mailbox(std::make_shared<Mailbox>()) {
    mailbox->receiver = receiver;
    mailbox->deliver = std::move(deliver);
}

BackgroundReader::~BackgroundReader() {
    const std::lock_guard lock(mailbox->mutex);
    mailbox->receiver = nullptr;
}

void BackgroundReader::Forget() {
    const std::lock_guard lock(mailbox->mutex);
    ++mailbox->wanted;
}

void BackgroundReader::Read(const std::string& path) {
    Forget();
    const unsigned number = mailbox->wanted; // changed by this thread only
    std::thread([box = mailbox, path, number] {
        ReadResult result = TryToRead(path);
        const std::lock_guard lock(box->mutex);
        if (!box->receiver || number != box->wanted) return;
        QMetaObject::invokeMethod(
            box->receiver,
            [box, number, result = std::move(result)] {
                if (number == box->wanted) box->deliver(result);
            },
            Qt::QueuedConnection);
    }).detach();
}

} // namespace gif89
