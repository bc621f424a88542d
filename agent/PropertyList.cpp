#include "agent/PropertyList.h"

#include "agent/BinaryPropertyList.h"
#include "agent/XmlPropertyList.h"

namespace vesk {

using namespace Qt::StringLiterals;

std::variant<QVariant, ServiceError> readPropertyList(QByteArrayView bytes) {
    auto value =
        isBinaryPropertyList(bytes) ? readBinaryPropertyList(bytes) : readXmlPropertyList(bytes);
    if (!value) {
        return ServiceError{
            ServiceError::propertyListDomain.toString(), 1,
            u"The file is not a valid property list."_s};
    }
    return *std::move(value);
}

} // namespace vesk
