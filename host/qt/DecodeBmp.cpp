// Decodes BMP pictures with Qt, which keeps their indices and tables.
#include "BmpDecoder.h"

#include <QIODevice>
#include <QImage>
#include <QImageReader>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <exception>
#include <utility>

namespace gif89 {

namespace {

// The toolkit takes pixels that are missing for black ones; only whoever serves its reads can tell.
class WatchedBytes : public QIODevice {
  public:
    WatchedBytes(const std::uint8_t* file, std::size_t fileBytes)
        : bytes(file), count(static_cast<qint64>(fileBytes)) {
        open(ReadOnly | Unbuffered); // a buffer would always ask for more than there is
    }
    qint64 size() const override { return count; }
    bool EndedEarly() const { return endedEarly; }

  protected:
    qint64 readData(char* into, qint64 wanted) override {
        const qint64 taken = std::min(wanted, std::max(count - pos(), qint64{0}));
        std::memcpy(into, bytes + (taken > 0 ? pos() : 0), static_cast<std::size_t>(taken));
        endedEarly = endedEarly || taken < wanted;
        return taken;
    }
    qint64 writeData(const char*, qint64) override { return -1; }

  private:
    const std::uint8_t* bytes;
    qint64 count;
    bool endedEarly = false;
};

class ImageBmp : public DecodedBmp {
  public:
    explicit ImageBmp(QImage decoded) : image(std::move(decoded)), colorTable(image.colorTable()) {
        form = image.depth() == 1 ? Form::bits : image.depth() == 8 ? Form::indices : Form::colors;
        rows = image.height();
        columns = image.width();
        tableColors = static_cast<int>(colorTable.size());
        table = colorTable.constData();
        pixels = image.constBits();
        rowBytes = image.bytesPerLine();
    }

  private:
    const QImage image;
    const QList<QRgb> colorTable;
};

// Keeps what the toolkit remarks on damaged files off standard error.
class Silence {
  public:
    Silence()
        : usual(
              qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {})) {
    }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;
    ~Silence() { qInstallMessageHandler(usual); }

  private:
    const QtMessageHandler usual;
};

} // namespace

DecodedBmp* GIF89DecodeBmp(const std::uint8_t* file, std::size_t fileBytes, char* reason,
                           std::size_t reasonBytes) {
    const Silence silence;
    try {
        WatchedBytes device(file, fileBytes);
        QImageReader reader(&device, "bmp");
        reader.setAutoDetectImageFormat(false);
        QImageReader::setAllocationLimit(0);
        QImage image = reader.read();
        if (!image.isNull() && !device.EndedEarly()) return new ImageBmp(std::move(image));
        std::snprintf(reason, reasonBytes, "%s",
                      device.EndedEarly() ? "the file ends before the picture does"
                                          : qPrintable(reader.errorString()));
    } catch (const std::exception&) {
        std::snprintf(reason, reasonBytes, "there is not enough memory");
    }
    return nullptr;
}

} // namespace gif89
