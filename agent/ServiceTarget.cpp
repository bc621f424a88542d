#include "agent/ServiceTarget.h"

#include "agent/ServiceLocations.h"

#include <unistd.h>

namespace vesk {

using namespace Qt::StringLiterals;

QString domainTarget() {
    return u"gui/"_s + QString::number(getuid());
}

QString serviceTarget() {
    return domainTarget() + u'/' + ServiceLocations::serviceLabel.toString();
}

} // namespace vesk
