#pragma once

#include <QByteArray>
#include <QCborMap>

#include <dcmtk/config/osconfig.h>
#include <dcmtk/dcmnet/assoc.h>
#include <dcmtk/dcmtls/tlslayer.h>

#include <memory>

/// Connections that are encrypted, and whose server is the one that it should be.
namespace encryption {

/// True for a request that wants no other.
bool IsWanted(const QCborMap& request);

/// TLS from 1.2 on, by the request's files. Null when one of them can't be read or isn't what it should be; `problem`
/// then tells which. Who accepts connections needs a certificate of his own.
std::unique_ptr<DcmTLSTransportLayer> LayerOf(const QCborMap& request, QByteArray& problem,
                                              T_ASC_NetworkRole role = NET_REQUESTOR);

/// Whether the certificate that the server has shown, and that has been checked, is one of this host, a name or an
/// address.
bool IsOfHost(T_ASC_Association* association, const QByteArray& host);

} // namespace encryption
