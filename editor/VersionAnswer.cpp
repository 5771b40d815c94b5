#include "editor/VersionAnswer.h"

#include "platform/Exception.h"
#include "speclang/SpecLanguage.h"
#include "speclang/SpecQuote.h"

#include <cstdlib>

namespace tw {

std::string versionCheckProductId(const ModelDescriptor& descriptor) { return descriptor.modelName + ".linux.x64"; }

VersionCheckResult readVersionAnswer(const std::string& body, const std::string& productId) {
    SpecMap answer = parseMap(body);
    auto record = answer.find(productId);
    if (record == answer.end()) throw FormatException("Invalid data format");
    SpecMap fields = parseMap(record->second);
    VersionCheckResult result;
    result.urgent = unquote(lookup(fields, "urgent"));
    result.message = unquote(lookup(fields, "message"));
    result.version = static_cast<std::int32_t>(std::strtol(lookup(fields, "version").c_str(), nullptr, 10));
    result.url = unquote(lookup(fields, "url"));
    return result;
}

}  // namespace tw
