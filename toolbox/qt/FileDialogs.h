// The save and open dialogs in windows.
#pragma once

#include "StandardFile.h"

#include <QString>

/// Names are shown as UTF-8; a file whose name is something else is listed but cannot be chosen.
class FileDialogs : public StandardFileResponder {
  public:
    void PutFile(ConstStr255Param prompt, ConstStr255Param defaultName,
                 StandardFileReply* reply) override;
    void GetFile(FileFilterProc filter, StandardFileReply* reply) override;

  private:
    QString folder; ///< of the last choice; empty for the current one
};
