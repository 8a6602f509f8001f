// Whole exports for the sweeps: dialogs operated, the preview used, and everything looked at that
// an export may leave behind.
#pragma once

#include "ExportModule.h"
#include "ScriptSource.h"
#include "TemporaryFolder.h"

#include <string>

namespace gif89 {

/// Has a user answer the module's dialogs for as long as this lives.
class Answering {
  public:
    explicit Answering(ScriptSource& user)
        : outerFiles(SetStandardFileResponder(&user)), outerEvents(SetEventSource(&user)) {}
    Answering(const Answering&) = delete;
    Answering& operator=(const Answering&) = delete;
    ~Answering() {
        SetStandardFileResponder(outerFiles);
        SetEventSource(outerEvents);
    }

  private:
    StandardFileResponder* outerFiles;
    EventSource* outerEvents;
};

/// What an export is given to do. The picture is noise: with a palette of 16 colours if indexed, of
/// more than the palette holds if not.
struct Order {
    bool indexed = false;
    int rows = 40, columns = 50;
    std::string colors = "6"; ///< RGB: what is typed
    bool comment = true;
    bool paletteFile = true; ///< RGB: whether the palette of a file is loaded
    bool channel = true;     ///< indexed: whether transparency is taken from one
};

/// How an export ended: "done", or what the user heard; and the file when it is done.
struct Ending {
    std::string said;
    std::string file;
};

/// Somebody who runs exports.
class ExportWay {
  public:
    virtual ~ExportWay() = default;
    virtual const char* Name() const = 0;

    /// Exports over an old file or into a free place, and checks that a failure leaves the old file
    /// whole (where that is promised) and nothing beside it.
    Ending Run(const Order& order);

  protected:
    /// Operates the module as ordered and saves; "done", or the reason.
    virtual std::string Export(const Order& order, ScriptSource& user,
                               const TemporaryFolder& folder) = 0;

    bool hasOldFile = true;
    bool keepsOldFile = true; ///< whatever fails
    ExportModule module{ExportModule::DefaultPath()};

  private:
    TemporaryFolder palettes;
};

/// The host library.
class Saving final : public ExportWay {
  public:
    explicit Saving(bool overOldFile) { hasOldFile = overOldFile; }
    const char* Name() const override { return hasOldFile ? "over a file" : "new file"; }

  private:
    std::string Export(const Order& order, ScriptSource& user,
                       const TemporaryFolder& folder) override;
};

/// A host of the record alone. It lets the module delete the old file, which is then gone when a
/// later step fails.
class OwnHost final : public ExportWay {
  public:
    OwnHost() { keepsOldFile = false; }
    const char* Name() const override { return "own host"; }

    /// The request and the property that fail, from 1; 0 for none.
    int failingRequest = 0, failingProperty = 0;
    /// How many the latest export has asked for.
    int requests = 0, properties = 0;

  private:
    std::string Export(const Order& order, ScriptSource& user,
                       const TemporaryFolder& folder) override;
};

} // namespace gif89
