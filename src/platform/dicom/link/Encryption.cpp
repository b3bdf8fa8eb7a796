#include "platform/dicom/link/Encryption.h"

#include "platform/dicom/link_messages.h"

#include <QFile>

#include <openssl/x509v3.h>

#include <vector>

using namespace dicomlink;

namespace {

QByteArray FileOf(const QCborMap& request, Key key)
{
    return QFile::encodeName(request.value(key).toString());
}

constexpr DcmTLSSecurityProfile Profile = TSP_Profile_BCP195_ND;

/// From its release 3.6.8 on the library looks whether the certificate suits the profile.
OFCondition TakeCertificate(DcmTLSTransportLayer& layer, const QByteArray& certificate)
{
#if PACKAGE_VERSION_NUMBER >= 368
    return layer.setCertificateFile(certificate.constData(), DCF_Filetype_PEM, Profile);
#else
    return layer.setCertificateFile(certificate.constData(), DCF_Filetype_PEM);
#endif
}

bool TakeOwn(DcmTLSTransportLayer& layer, const QByteArray& certificate, const QByteArray& key, QByteArray& problem)
{
    // Nobody is asked for the password of a key that has one.
    layer.setPrivateKeyPasswd("");
    if (TakeCertificate(layer, certificate).bad())
        problem = certificate;
    else if (layer.setPrivateKeyFile(key.constData(), DCF_Filetype_PEM).bad() ||
             !layer.checkPrivateKeyMatchesCertificate())
        problem = key.isEmpty() ? certificate : key;
    return problem.isEmpty();
}

} // namespace

bool encryption::IsWanted(const QCborMap& request)
{
    return !request.value(AuthorityKey).toString().isEmpty();
}

std::unique_ptr<DcmTLSTransportLayer> encryption::LayerOf(const QCborMap& request, QByteArray& problem,
                                                          T_ASC_NetworkRole role)
{
    auto layer = std::make_unique<DcmTLSTransportLayer>(role, nullptr, OFTrue);
    const QByteArray authority = FileOf(request, AuthorityKey);
    const QByteArray certificate = FileOf(request, CertificateKey);
    const QByteArray key = FileOf(request, PrivateKeyKey);
    if (layer->addTrustedCertificateFile(authority.constData(), DCF_Filetype_PEM).bad()) {
        problem = authority;
        return nullptr;
    }
    const bool needsOwn = role != NET_REQUESTOR || !(certificate.isEmpty() && key.isEmpty());
    if (needsOwn && !TakeOwn(*layer, certificate, key, problem))
        return nullptr;
    if (layer->setTLSProfile(Profile).bad() || layer->activateCipherSuites().bad()) {
        problem = "TLS";
        return nullptr;
    }
    layer->setCertificateVerification(DCV_requireCertificate);
    return layer;
}

bool encryption::IsOfHost(T_ASC_Association* association, const QByteArray& host)
{
    const unsigned long bytes = ASC_getPeerCertificateLength(association);
    std::vector<unsigned char> der(bytes);
    if (bytes == 0 || ASC_getPeerCertificate(association, der.data(), bytes) != bytes)
        return false;
    const unsigned char* at = der.data();
    const std::unique_ptr<X509, void (*)(X509*)> certificate(d2i_X509(nullptr, &at, static_cast<long>(bytes)),
                                                             &X509_free);
    // A certificate may have an address among its names.
    return certificate != nullptr &&
           (X509_check_host(certificate.get(), host.constData(), static_cast<size_t>(host.size()), 0, nullptr) == 1 ||
            X509_check_ip_asc(certificate.get(), host.constData(), 0) == 1);
}
