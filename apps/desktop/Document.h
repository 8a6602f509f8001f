// The open picture, with all that the window shows of it, and reading it beside the window's own
// work.
#pragma once

#include "Picture.h"
#include "PictureImage.h"

#include <functional>
#include <memory>
#include <mutex>
#include <string>

class QObject;

namespace gif89 {

struct Document {
    std::string path; ///< of the file, any bytes; empty for a picture without one
    std::string name; ///< without folder and suffix, for the file that is made
    Picture picture;  ///< knows its visible colours
    QImage image;     ///< the exact pixels
    ShownImage shown;
    bool fitsTable = false; ///< it can go through the module with all its colours
};
using DocumentPtr = std::shared_ptr<const Document>;

/// Reads a file. Throws Problem, or std::exception without memory.
DocumentPtr ReadDocument(const std::string& path);
/// A picture from elsewhere.
DocumentPtr MakeDocument(Picture picture, const std::string& name);

/// What came of reading: the document, or null and the reason as a sentence without the name.
struct ReadResult {
    DocumentPtr document;
    std::string reason;
};

/// Reads documents on threads of its own and hands them to the window's. Only what was asked for
/// last is delivered. A read that never ends keeps neither the window nor the program.
class BackgroundReader {
  public:
    /// `deliver` is called on `receiver`'s thread; both must outlive the reader.
    BackgroundReader(QObject* receiver, std::function<void(ReadResult)> deliver);
    BackgroundReader(const BackgroundReader&) = delete;
    BackgroundReader& operator=(const BackgroundReader&) = delete;
    ~BackgroundReader();

    void Read(const std::string& path);
    /// The document that is under way is no longer wanted.
    void Forget();

  private:
    /// Shared with the threads; it outlives the reader as long as one runs.
    struct Mailbox {
        std::mutex mutex;
        QObject* receiver; ///< null once nobody waits
        std::function<void(ReadResult)> deliver;
        unsigned wanted = 0; ///< number of the read that is waited for
    };

    std::shared_ptr<Mailbox> mailbox;
};

} // namespace gif89
