// What a CLAP product's entry (its exported clap_entry) hands out: the plug-in factory with
// the one plug-in of a product, whose instances answer the host through the tables of
// functions made here. The product's entry file defines clap_entry with these.
#pragma once

#include <memory>

#include <clap/plugin-factory.h>
#include <clap/plugin.h>

#include "editor/EditorFactory.h"
#include "patch/ModelFactory.h"

namespace tw::clap {

struct Product {
    const char* name;  // for what the entry points report
    clap_plugin_descriptor_t descriptor;
    std::unique_ptr<ModelFactory> (*makeFactory)();
    const EditorFactory& (*editor)();
};

// The entry's three calls for `product`, which must live as long as the library (a static).
// Any thread, as the format has it.
bool entryInit(const Product& product, const char* path);
void entryDeinit(const Product& product);
const void* entryFactory(const Product& product, const char* factoryId);

}  // namespace tw::clap
