#pragma once

#include <TavaroAutomation/Driving/UIRequests.h>
#include <TavaroCore/Records/JSONValue.h>

#include <string>

/// What a client, or a person by `tavaro ui`, asks of other applications, read by name. Each throws `MCPToolError` for
/// the first argument that cannot be used.
namespace tavaro::uiArguments {

std::string app(JSONValue::Object const& arguments);
UIElementsRequest elements(JSONValue::Object const& arguments);
UIClickRequest click(JSONValue::Object const& arguments);
UIScrollRequest scroll(JSONValue::Object const& arguments);
UIKeysRequest keys(JSONValue::Object const& arguments);
UIScreenshotRequest screenshot(JSONValue::Object const& arguments);

}
