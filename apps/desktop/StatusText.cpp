#include "StatusText.h"

#include <QFile>
#include <QLocale>
#include <QStringList>

#include <cmath>
#include <filesystem>

namespace gif89 {
namespace {

QString Grouped(std::int64_t number) {
    return QLocale(QLocale::English).toString(static_cast<qlonglong>(number));
}

QString Counted(std::int64_t number, const char* noun) {
    return Grouped(number) + u' ' + QLatin1String(noun) + QLatin1String(number == 1 ? "" : "s");
}

bool IsGrey(const Picture& picture) {
    for (int i = 0; i < picture.colors; ++i) {
        const RGBtuple color = TableEntry(picture.table, i);
        if (color.red != color.green || color.red != color.blue) return false;
    }
    return true;
}

QString ProfileText(const InputNotes& notes) {
    const QString name =
        notes.profileName.empty()
            ? QStringLiteral("colour profile")
            : QStringLiteral("profile “%1”").arg(QString::fromStdString(notes.profileName));
    switch (notes.profileUse) {
    case InputNotes::ProfileUse::converted:
        return name + QStringLiteral(" converted to sRGB");
    case InputNotes::ProfileUse::unusable:
        return name + QStringLiteral(" could not be used");
    default:
        return {};
    }
}

} // namespace

QString ModeText(const Picture& picture) {
    if (picture.kind == Picture::Kind::rgb) return QStringLiteral("RGB");
    if (picture.kind == Picture::Kind::rgbAlpha) return QStringLiteral("RGB with transparency");
    const QString mode =
        IsGrey(picture)
            ? QStringLiteral("grey, ") + Counted(picture.colors, "level")
            : QStringLiteral("indexed, ") +
                  (picture.colors == 1 ? QStringLiteral("1 entry")
                                       : QStringLiteral("%1 entries").arg(picture.colors));
    return OpacityOf(picture) ? mode + QStringLiteral(", with transparency") : mode;
}

QString SizeText(int columns, int rows) {
    return QStringLiteral("%1 × %2").arg(Grouped(columns), Grouped(rows));
}

QString ColorsText(std::int64_t colors) {
    return Counted(colors, "colour");
}

QString ChannelsText(const Picture& picture) {
    QStringList names;
    for (const Channel& channel : picture.channels)
        if (channel.name != kTransparencyChannel) names << QString::fromStdString(channel.name);
    if (names.isEmpty()) return {};
    return QString::fromLatin1(names.size() == 1 ? "channel " : "channels ") +
           names.join(QStringLiteral(", "));
}

QString NotesText(const InputNotes& notes) {
    QStringList parts;
    parts << ProfileText(notes);
    if (notes.inks && notes.profileUse != InputNotes::ProfileUse::converted)
        parts << QStringLiteral("inks turned to RGB");
    if (notes.oriented) parts << QStringLiteral("turned upright");
    if (notes.rounded) parts << QStringLiteral("rounded to 8 bits");
    if (notes.pictures > 1) parts << QStringLiteral("the first of %1 pictures").arg(notes.pictures);
    for (const std::string& sentence : notes.warnings) parts << QString::fromStdString(sentence);
    parts.removeAll(QString());
    return parts.join(QStringLiteral(", "));
}

// The window's wishes come from the module's dialogs, which allow no others.
QString RefusalText(const Refusal& refusal) {
    switch (refusal.kind) {
    case Refusal::Kind::noTable:
        return QStringLiteral("has too many colours for a colour table, or opacities between all "
                              "and none");
    case Refusal::Kind::keepsTable:
        return QStringLiteral("an indexed picture keeps its own palette; by the routes Automatic "
                              "and True Colour it may get another");
    case Refusal::Kind::noEntry:
        return QStringLiteral("the picture has no entry %1; its entries are 0 to %2")
            .arg(refusal.number)
            .arg(refusal.entries - 1);
    case Refusal::Kind::noColor:
        return QStringLiteral("no entry of the picture has the colour that was made transparent");
    case Refusal::Kind::noChannel:
        return QStringLiteral("the picture has no channel “%1”")
            .arg(QString::fromStdString(refusal.name));
    case Refusal::Kind::nothingToInvert:
        return QStringLiteral("there is no channel to invert");
    case Refusal::Kind::entriesNeedTable:
    case Refusal::Kind::channelsNeedTable:
        return QStringLiteral("transparent entries and channels are for indexed pictures");
    case Refusal::Kind::exactIsCounted:
        return QStringLiteral("an exact palette has the picture's own number of colours");
    case Refusal::Kind::tooManyForExact:
        return QStringLiteral("the picture has too many colours for an exact palette");
    case Refusal::Kind::notTheModules:
    case Refusal::Kind::tooManyKept:
        return QStringLiteral("the module has no such palette");
    case Refusal::Kind::nothingToCut:
        return QStringLiteral("only a fixed or loaded palette can be cut");
    }
    return {};
}

QString AdviceText(ProblemKind kind) {
    return kind == ProblemKind::fileIsInput ? QStringLiteral("; choose another name") : QString();
}

QString ZoomText(double zoom) {
    const double percent = zoom * 100;
    const bool whole = std::abs(percent - std::round(percent)) < 0.05;
    return QString::number(percent, 'f', whole ? 0 : 1) + QStringLiteral(" %");
}

QString FileText(const std::string& bytes) {
    QString text = QFile::decodeName(QByteArray::fromStdString(bytes));
    return text.replace(QChar(QChar::ReplacementCharacter), u'?');
}

QString FileNameText(const std::string& path) {
    return FileText(std::filesystem::path(path).filename().string());
}

} // namespace gif89
