// What an export kept and lost, in words, beside the pictures.
#pragma once

#include "ExportReport.h"

#include <QScrollArea>
#include <QString>

#include <string>
#include <vector>

class QGridLayout;
class QLabel;

namespace gif89 {

class ReportPanel : public QScrollArea {
    Q_OBJECT
  public:
    explicit ReportPanel(QWidget* parent = nullptr);

    void Show(const ExportReport& report, const std::string& path);

  signals:
    void CopyPathWanted();
    void ShowFolderWanted();

  protected:
    void changeEvent(QEvent* event) override;

  private:
    void Color();

    QLabel* name;
    QLabel* verdict;
    QLabel* losses;
    QGridLayout* lines;
    std::vector<QLabel*> titles; ///< of the lines
    bool lost = false;
};

} // namespace gif89
