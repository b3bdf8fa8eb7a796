#include "capture/PictureImport.h"

#include "capture/StillCapture.h"
#include "contracts/desktop.h"
#include "contracts/files.h"
#include "contracts/ImagXpress.h"
#include "contracts/OpenFilesDialog.h"
#include "contracts/pictures.h"
#include "contracts/PlatformError.h"
#include "frame/components.h"
#include "frame/guard.h"
#include "frame/services.h"
#include "frame/waiting.h"
#include "session/VisitContext.h"
#include "text/text_routines.h"

#include <QCollator>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

struct FileKind
{
    const char16_t* label;
    const char16_t* patterns;
};

constexpr FileKind FileKinds[] = {
    {u"All Image File Types",
     u"*.bmp;*.cal;*.dib;*.dca;*.mod;*.dcx;*.gif;*.jp2;*.jls;*.jpg;*.jif;*.ljp;*.pbm;*.pcx;*.pgm;*.pic;*.png;*.ppm;"
     u"*.tiff;*.tif;*.tga;*.wsq;*.jb2;*.gif;*.jpeg;*.cals;*.jbig2;*.ico;*.rle;*.lzw;*.wbmp"},
    {u"Windows Bitmap (*.BMP)", u"*.bmp"},
    {u"CALS (*.CAL)", u"*.cal"},
    {u"Windows Device Independent Bitmap(*.DIB)", u"*.dib"},
    {u"MO:DCA (*.DCA & *.MOD)", u"*.dca;*.mod"},
    {u"Zsoft Multiple Page (*.DCX)", u"*.dcx"},
    {u"CompuServe GIF (*.GIF)", u"*.gif"},
    {u"JPEG 2000 (*.JP2)", u"*.jp2"},
    {u"JPEG LS (*.JLS)", u"*.jls"},
    {u"JFIF Compliant JPEG (*.JPG & *.JIF)", u"*.jpg;*.jif"},
    {u"Lossless JPEG (*.LJP)", u"*.ljp"},
    {u"Portable Bitmap (*.PBM)", u"*.pbm"},
    {u"Zsoft PaintBrush (*.PCX)", u"*.pcx"},
    {u"Portable Graymap (*.PGM)", u"*.pgm"},
    {u"Pegasus PIC or Enhanced PIC (*.PIC)", u"*.pic"},
    {u"Portable Network Graphics (*.PNG)", u"*.png"},
    {u"Portable Pixmap (*.PPM)", u"*.ppm"},
    {u"Tagged Image Format (*.TIFF)", u"*.tif;*.tiff"},
    {u"Truevision TARGA (*.TGA)", u"*.tga"},
    {u"WSQ Fingerprint File (*.WSQ)", u"*.wsq"},
    {u"JBIG2 File (*.JB2)", u"*.jb2"},
    {u"All Files (*.*)", u"*.*"},
};

/// Each text with a NUL behind it, and one more at the end.
QString DialogFilter()
{
    QString filter;
    for (const FileKind& kind : FileKinds)
        filter += QString::fromUtf16(kind.label) + QChar(u'\0') + QString::fromUtf16(kind.patterns) + QChar(u'\0');
    return filter + QChar(u'\0');
}

/// What the message at the end names; of more it says how many.
constexpr int MostNamed = 10;
constexpr int MostLetters = 60;

QString Shortened(const QString& text)
{
    const QString line = text.simplified();
    return line.size() <= MostLetters ? line : line.left(MostLetters) + u"…"_s;
}

} // namespace

/// Files on their way into one visit.
struct PictureImport::Several
{
    Visit visit;
    QStringList paths;
    int begun = 0;
    int stored = 0;
    int onWay = 0; ///< Being filed.
    int noRoom = 0;
    QStringList refused{}; ///< Names, each with the reason.
    bool isEnded = false;  ///< None is begun any more; an answer that comes yet is nobody's.
    bool isReading = false;

    bool IsOver() const { return (isEnded || begun == paths.size()) && !isReading && onWay == 0; }
    void Refuse(const QString& path, const std::exception_ptr& fault)
    {
        const QString reason = Shortened(guard::TextOf(fault));
        refused << u"%1: %2"_s.arg(Shortened(path.section(u'/', -1)), reason);
    }
    QString Outcome() const;
};

QString PictureImport::Several::Outcome() const
{
    QStringList parts{u"그림파일 %1개 중 %2개를 저장하였습니다."_s.arg(paths.size()).arg(stored + onWay)};
    if (!refused.isEmpty()) {
        parts << u"\r\n저장하지 못한 파일:"_s << refused.mid(0, MostNamed);
        if (refused.size() > MostNamed)
            parts << u"외 %1개"_s.arg(refused.size() - MostNamed);
    }
    if (noRoom > 0)
        parts << u"\r\n한도 %1장이 되어 가져오지 않은 파일 %2개"_s.arg(VisitGrid::MostPictures).arg(noRoom);
    // What is still being read comes to nobody.
    if (const auto left = paths.size() - begun + (isReading ? 1 : 0); left > 0)
        parts << u"\r\n취소하여 가져오지 않은 파일 %1개"_s.arg(left);
    return parts.join(u"\r\n"_s);
}

void PictureImport::ImportPictureFile()
{
    const std::optional<QStringList> chosen = UseService<OpenFilesDialog>().Show(DialogFilter());
    if (chosen)
        ImportFiles(chosen->isEmpty() ? QStringList{QString()} : *chosen);
}

void PictureImport::ImportFiles(QStringList paths)
{
    if (paths.size() == 1) {
        ImportFile(paths.first());
        return;
    }
    // As the dialog shows them: 2 before 10.
    QCollator order{QLocale(QLocale::Korean)};
    order.setNumericMode(true);
    order.setCaseSensitivity(Qt::CaseInsensitive);
    std::ranges::stable_sort(paths, [&order](const QString& one, const QString& other) {
        return order.compare(one.section(u'/', -1), other.section(u'/', -1)) < 0;
    });
    ImportSeveral(paths);
}

void PictureImport::ImportSeveral(const QStringList& paths)
{
    if (!m_stills.HasChart())
        return;
    const auto files = std::make_shared<Several>(Several{.visit = CurrentVisit(), .paths = paths});
    ReadNext(files);
    const waiting::Outcome outcome =
        waiting::Await(u"그림파일 %1개를 가져오고 있습니다."_s.arg(paths.size()), [files] { return files->IsOver(); });
    files->isEnded = true;
    if (outcome != waiting::Outcome::Leaving)
        ShowInformation(files->Outcome());
}

void PictureImport::ReadNext(const SeveralPointer& files)
{
    if (files->isEnded || files->begun == files->paths.size())
        return;
    files->isReading = true;
    m_reader.Post([this, files, path = files->paths[files->begun++]] {
        ForeignPicture read;
        std::exception_ptr fault;
        try {
            read = Pictures().LoadForeign(path);
        } catch (...) {
            fault = std::current_exception();
        }
        // Once it has ended, this may be gone.
        PostToScreen([this, files, read, fault] {
            if (!files->isEnded)
                TakeRead(files, read, fault);
        });
    });
}

void PictureImport::TakeRead(const SeveralPointer& files, const ForeignPicture& read, const std::exception_ptr& fault)
{
    files->isReading = false;
    try {
        guard::Rethrow(fault);
        File(files, read);
    } catch (...) {
        files->Refuse(files->paths[files->begun - 1], std::current_exception());
    }
    ReadNext(files);
}

void PictureImport::File(const SeveralPointer& files, const ForeignPicture& read)
{
    if (!CutFileName(read.picture).isEmpty())
        throw PlatformError(u"잘린 그림파일입니다.!!"_s);
    QByteArray content = read.original;
    if (content.isEmpty()) {
        m_carrier.setPicture(read.picture);
        content = m_carrier.TargetContent();
        m_carrier.setPicture(QImage());
    }
    ++files->onWay;
    const auto filed = [files, path = files->paths[files->begun - 1]](const std::exception_ptr& fault) {
        --files->onWay;
        if (fault == nullptr)
            ++files->stored;
        else if (files->isEnded)
            guard::Rethrow(fault);
        else
            files->Refuse(path, fault);
    };
    if (!m_stills.FileContent(files->visit, content, filed)) {
        --files->onWay;
        ++files->noRoom;
    }
}

void PictureImport::ImportFile(const QString& path)
{
    if (Trim(path).isEmpty() || (!FileExists(path) && !FolderExists(path))) {
        ShowInformation(u"선택된 파일이 없습니다.!!"_s);
        return;
    }
    m_carrier.setSourceFile(QString());
    m_carrier.setSourceFile(path);
    m_carrier.Refresh();
    if (!CutFileName(m_carrier.Picture()).isEmpty())
        throw PlatformError(u"잘린 그림파일입니다.!!"_s);
    m_stills.FilePicture(m_carrier);
}
