// The maker's answer to a version check, read for one product: a spec map from product
// ids to records of `urgent`, `message`, `version` and `url`.
#pragma once

#include <string>

#include "patch/ModelDescriptor.h"
#include "platform/VersionChecker.h"

namespace tw {

// The id of this build of the product in the answer: "<modelName>.linux.x64".
std::string versionCheckProductId(const ModelDescriptor& descriptor);

// The product's record; without one FormatException "Invalid data format".
VersionCheckResult readVersionAnswer(const std::string& body, const std::string& productId);

}  // namespace tw
