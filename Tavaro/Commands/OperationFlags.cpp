#include <Tavaro/Commands/OperationFlags.h>

#include <Tavaro/Commands/TextFile.h>

#include <TavaroCore/Errors/Error.h>
#include <TavaroCore/Records/JSONError.h>

#include <fmt/format.h>

namespace tavaro::commands {

Check checkOf(Parameter const& parameter) {
    if (parameter.range)
        return [range = *parameter.range](std::string const& text) { return numberProblem(range, text); };
    return parameter.textProblem ? Check(parameter.textProblem) : Check();
}

JSONValue readJSONFile(std::string const& file) {
    try {
        return JSONValue::parse(readText(file, Dash::isStandardInput));
    } catch (JSONError const& error) {
        throw Error(fmt::format("Could not read the JSON in “{}”: {}.", file, error.what()));
    }
}

}
