#include <Tavaro/Studio/Timeline/TimelineTypes.h>

#include <Tavaro/Studio/Timeline/TimelineAccessibility.h>
#include <Tavaro/Studio/Timeline/TimelineItem.h>

#include <qqml.h>

namespace tavaro {

void registerTimelineTypes() {
    qmlRegisterType<TimelineItem>("Tavaro.Editor", 1, 0, "Timeline");
    installTimelineAccessibility();
}

}
