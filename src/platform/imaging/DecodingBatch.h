#pragma once

#include "contracts/pictures.h"
#include "platform/imaging/picture_content.h"

class QThreadPool;

/// A file by its path, or, when the path is empty, its content.
struct PictureSource
{
    QString path;
    QByteArray content;
};

/// Decodes a list of picture files on a pool's threads, `lookAhead` pictures ahead of the one that was taken
/// last.
class DecodingBatch final : public PictureBatch
{
    Q_OBJECT

public:
    DecodingBatch(const QList<PictureSource>& sources, const picturecontent::Wish& wish, int lookAhead,
                  std::shared_ptr<QThreadPool> pool);
    /// Doesn't wait: a picture that is being decoded is dropped when it is done.
    ~DecodingBatch() override;

    bool IsReady(int index) const override;
    QImage Take(int index) override;

private:
    struct Work;
    static void DecodeNext(const std::shared_ptr<Work>& work);
    void StartWorkers();

    std::shared_ptr<Work> m_work;
    std::shared_ptr<QThreadPool> m_pool;
};
