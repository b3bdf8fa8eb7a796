#include "capture/PictureImport.h"

#include "capture/StillCapture.h"
#include "contracts/desktop.h"
#include "contracts/files.h"
#include "contracts/ImagXpress.h"
#include "contracts/pictures.h"
#include "contracts/PlatformError.h"
#include "frame/components.h"
#include "frame/guard.h"
#include "frame/services.h"
#include "text/text_routines.h"

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

} // namespace

void PictureImport::ImportPictureFile()
{
    const std::optional<QString> chosen = UseService<Desktop>().ShowOpenDialog(QString(), DialogFilter());
    if (chosen)
        ImportFile(*chosen);
}

void PictureImport::ImportFiles(const QStringList& paths)
{
    for (const QString& path : paths)
        Guarded([&] { ImportFile(path); });
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
