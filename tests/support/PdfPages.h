#pragma once

#include <QDir>
#include <QImage>
#include <QProcess>
#include <QStringList>

/// Printed pages read back from a folder by poppler's programs.
class PdfPages
{
public:
    explicit PdfPages(const QString& folder) : m_folder(folder) {}

    QStringList Files() const { return QDir(m_folder).entryList({QStringLiteral("*.pdf")}, QDir::Files, QDir::Name); }
    /// Text of a page with its layout kept; `index` counts from 0.
    QString Text(int index) const
    {
        return QString::fromUtf8(
            Output(QStringLiteral("pdftotext"), {QStringLiteral("-layout"), Path(index), QStringLiteral("-")}));
    }
    QString Report(const QString& program, int index) const
    {
        return QString::fromUtf8(Output(program, {Path(index)}));
    }
    /// The list of embedded pictures.
    QString ImageList(int index) const
    {
        return QString::fromUtf8(Output(QStringLiteral("pdfimages"), {QStringLiteral("-list"), Path(index)}));
    }
    QImage Picture(int index, int dotsPerInch) const
    {
        return QImage::fromData(Output(QStringLiteral("pdftoppm"), {QStringLiteral("-png"), QStringLiteral("-r"),
                                                                    QString::number(dotsPerInch), Path(index)}));
    }

private:
    QString Path(int index) const { return m_folder + u'/' + Files().value(index); }
    static QByteArray Output(const QString& program, const QStringList& arguments)
    {
        QProcess process;
        process.start(program, arguments);
        process.waitForFinished();
        return process.readAllStandardOutput();
    }

    QString m_folder;
};
