// Resources: the layouts, pictures, fonts, string table and factory bank that the
// product carries inside its binary. A resource is found by type (its file extension,
// such as "png") and name (its file stem). A resource folder beside the binary replaces
// any of them by file name, so that artists can try new pictures without a build.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tw {

struct EmbeddedResource {
    const char* type;
    const char* name;
    const unsigned char* data;
    std::size_t size;
};

// The table compiled into the binary; defined by the generated code of the build.
std::span<const EmbeddedResource> embeddedResources();

// The embedded resource of that type and name, compared without regard to case.
const EmbeddedResource* findEmbeddedResource(std::string_view type, std::string_view name);

// The resource folder of a product called `productName`, in `binaryFolder` (which ends
// in '/'): the folder named by the text file "<productName> Resources Path.txt" there,
// with its line ends removed, or else "<binaryFolder><productName> Resources/".
// The answer always ends in '/'.
std::string getResourceFolder(std::string_view productName, const std::string& binaryFolder);

// The file "<name>.<type>" in `resourceFolder` when it exists and replaces the resource.
std::optional<std::string> overridingFile(const std::string& resourceFolder, std::string_view type,
                                          std::string_view name);

// Tells the user on stderr, once per file and process, that a file of the resource
// folder could not be used and why: the one who put it there learns why the product
// failed, or why it shows something else.
void reportOverrideFault(std::string_view productName, const std::string& file, std::string_view fault);

// Reads a resource: "<name>.<type>" in `resourceFolder` when that file exists, else the
// embedded one. Answers nothing when neither exists.
std::optional<std::vector<std::uint8_t>> loadResource(const std::string& resourceFolder,
                                                      std::string_view type, std::string_view name);

}  // namespace tw
