#include "platform/dicom/link/MovieFile.h"

#include <QFile>

#include <dcmtk/dcmdata/dcdeftag.h>
#include <dcmtk/dcmdata/dcistrma.h>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/// The file's bytes, then a 0 where their number is odd.
class PaddedFile : public DcmProducer
{
public:
    explicit PaddedFile(const QByteArray& path)
    {
        const int handle = open(path.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW);
        struct stat facts = {};
        if (handle >= 0 && fstat(handle, &facts) == 0 && S_ISREG(facts.st_mode)) {
            m_bytes = facts.st_size;
            m_handle = handle;
        } else if (handle >= 0) {
            close(handle);
        }
    }
    ~PaddedFile() override
    {
        if (m_handle >= 0)
            close(m_handle);
    }
    PaddedFile(const PaddedFile&) = delete;
    PaddedFile& operator=(const PaddedFile&) = delete;

    offile_off_t Length() const { return m_handle < 0 ? 0 : m_bytes + m_bytes % 2; }

    OFBool good() const override { return m_handle >= 0; }
    OFCondition status() const override { return m_handle >= 0 ? EC_Normal : EC_InvalidStream; }
    OFBool eos() override { return m_at >= Length(); }
    offile_off_t avail() override { return std::max<offile_off_t>(Length() - m_at, 0); }
    offile_off_t read(void* buffer, offile_off_t most) override
    {
        auto* target = static_cast<char*>(buffer);
        offile_off_t filled = 0;
        while (filled < most && m_handle >= 0 && m_at < m_bytes) {
            const auto wanted = static_cast<size_t>(std::min(most - filled, m_bytes - m_at));
            const ssize_t got = pread(m_handle, target + filled, wanted, m_at);
            if (got < 0 && errno == EINTR)
                continue;
            if (got <= 0) { // It has become shorter, or its disk has gone.
                close(m_handle);
                m_handle = -1;
                break;
            }
            filled += got;
            m_at += got;
        }
        if (filled < most && m_at == m_bytes && m_at < Length()) {
            target[filled++] = '\0';
            ++m_at;
        }
        return filled;
    }
    offile_off_t skip(offile_off_t bytes) override
    {
        const offile_off_t skipped = std::min(bytes, avail());
        m_at += skipped;
        return skipped;
    }
    void putback(offile_off_t bytes) override { m_at = std::max<offile_off_t>(m_at - bytes, 0); }

private:
    int m_handle = -1;
    offile_off_t m_bytes = 0;
    offile_off_t m_at = 0;
};

class MovieFactory : public DcmInputStreamFactory
{
public:
    explicit MovieFactory(const QByteArray& path) : m_path(path) {}

    DcmInputStream* create() const override;
    DcmInputStreamFactory* clone() const override { return new MovieFactory(m_path); }
    DcmInputStreamFactoryType ident() const override { return DFT_DcmInputFileStreamFactory; }

private:
    QByteArray m_path;
};

class MovieStream : public DcmInputStream
{
public:
    explicit MovieStream(const QByteArray& path) : DcmInputStream(&m_file), m_path(path), m_file(path) {}

    DcmInputStreamFactory* newFactory() const override { return new MovieFactory(m_path); }

private:
    QByteArray m_path;
    PaddedFile m_file;
};

DcmInputStream* MovieFactory::create() const
{
    return new MovieStream(m_path);
}

} // namespace

std::unique_ptr<DcmPixelItem> MovieItem(const QString& path)
{
    constexpr offile_off_t Most = 0xFFFFFFFE;
    const QByteArray name = QFile::encodeName(path);
    const offile_off_t length = PaddedFile(name).Length();
    if (length <= 0 || length >= Most)
        return nullptr;
    auto item = std::make_unique<DcmPixelItem>(DcmTag(DCM_Item, EVR_OB));
    auto factory = std::make_unique<MovieFactory>(name);
    // The item has the factory then.
    if (item->createValueFromTempFile(factory.get(), static_cast<Uint32>(length), EBO_LittleEndian).bad())
        return nullptr;
    static_cast<void>(factory.release());
    return item;
}
