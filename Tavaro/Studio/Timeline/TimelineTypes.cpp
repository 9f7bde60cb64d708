#include <Tavaro/Studio/Timeline/TimelineTypes.h>

#include <Tavaro/Studio/Timeline/TimelineAccessibility.h>
#include <Tavaro/Studio/Timeline/TimelineItem.h>

#include <qqml.h>

namespace tavaro {

void registerTimelineTypes() {
    qmlRegisterType<TimelineItem>("Tavaro.Studio", 1, 0, "Timeline");
    installTimelineAccessibility();
}

}
