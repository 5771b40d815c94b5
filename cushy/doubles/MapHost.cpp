#include "cushy/doubles/MapHost.h"

#include "cushy/CushyView.h"
#include "graphics/ResourceManager.h"
#include "platform/Exception.h"

namespace tw {

bool MapHost::reportError(CushyView&, const std::string& message) {
    errors.push_back(message);
    return reportsErrors;
}

void MapHost::reload(CushyView& view) {
    ++reloads;
    if (onReload) onReload(view);
}

void MapHost::update(CushyView& view) {
    ++updates;
    (root != nullptr ? *root : view).refresh();
}

std::string MapHost::layoutSource(CushyView&, const std::string& name) {
    const auto found = layouts.find(name);
    if (found == layouts.end()) throw FormatException("Resource not found: " + name);
    return found->second;
}

std::shared_ptr<Image> MapHost::image(CushyView&, const std::string& spec) {
    if (const auto found = images.find(spec); found != images.end()) return found->second;
    if (resources_ == nullptr) throw FormatException("Resource not found: " + spec);
    return resources_->getImage(resources_->parseImageSpec(spec));
}

std::shared_ptr<Font> MapHost::font(CushyView&, const std::string& spec) {
    if (resources_ == nullptr) throw FormatException("Resource not found: " + spec);
    return resources_->getFont(spec);
}

std::string MapHost::file(CushyView&, const std::string& name) {
    const auto found = layouts.find(name);
    return found == layouts.end() ? std::string() : found->second;
}

std::string MapHost::translate(CushyView&, const std::string& text) { return strings.translate(text); }

std::shared_ptr<View> MapHost::createView(CushyView& view, const IntRect& rect, const std::string& type,
                                          const SpecMap& spec) {
    return makeView ? makeView(view, rect, type, spec) : nullptr;
}

bool MapHost::isEnabled(CushyView&, const std::string& action, const std::string&) { return action != "disabled"; }

bool MapHost::isChecked(CushyView&, const std::string& action, const std::string&) { return action == "checked"; }

void MapHost::perform(CushyView&, const std::string& action, const std::string& params) {
    performed.push_back(action + " " + params);
    if (action == "fail") throw FormatException("Failed: " + params);
}

std::string MapHost::getVariable(CushyView&, const std::string& name) {
    ++reads;
    const auto found = variables.find(name);
    return found == variables.end() ? std::string() : found->second;
}

bool MapHost::isWritable(CushyView&, const std::string& name) { return readOnly.count(name) == 0; }

void MapHost::beginEnd(CushyView&, const std::string& name, bool beginning) {
    writes.push_back((beginning ? "begin " : "end ") + name);
}

void MapHost::setVariable(CushyView&, const std::string& name, const std::string& value, bool continuous) {
    writes.push_back(name + "=" + value + (continuous ? " continuous" : ""));
    variables[name] = value;
}

}  // namespace tw
