// A Cushy host for tests and for cushy-render: variables from a map (any name writable
// unless listed as read-only), layouts from a map of texts, pictures and fonts from the
// resource manager, translation from a string table, and a record of everything asked of
// it that a test may want to see.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "cushy/CushyHost.h"
#include "cushy/StringTable.h"

namespace tw {

class ResourceManager;

class MapHost : public CushyHost {
public:
    explicit MapHost(ResourceManager* resources = nullptr) : resources_(resources) {}

    std::string title() override { return "Tidewake"; }
    bool reportError(CushyView& view, const std::string& message) override;
    void reload(CushyView& view) override;
    void update(CushyView& view) override;
    std::string layoutSource(CushyView& view, const std::string& name) override;
    std::shared_ptr<Image> image(CushyView& view, const std::string& spec) override;
    std::shared_ptr<Font> font(CushyView& view, const std::string& spec) override;
    std::string file(CushyView& view, const std::string& name) override;
    std::string translate(CushyView& view, const std::string& text) override;
    std::shared_ptr<View> createView(CushyView& view, const IntRect& rect, const std::string& type,
                                     const SpecMap& spec) override;
    bool isEnabled(CushyView& view, const std::string& action, const std::string& params) override;
    bool isChecked(CushyView& view, const std::string& action, const std::string& params) override;
    void perform(CushyView& view, const std::string& action, const std::string& params) override;
    std::string getVariable(CushyView& view, const std::string& name) override;
    bool isWritable(CushyView& view, const std::string& name) override;
    void beginEnd(CushyView& view, const std::string& name, bool beginning) override;
    void setVariable(CushyView& view, const std::string& name, const std::string& value, bool continuous) override;

    std::map<std::string, std::string, std::less<>> variables;
    std::set<std::string, std::less<>> readOnly;
    std::map<std::string, std::string, std::less<>> layouts;
    // Pictures by their whole spec text, served before the resource manager's.
    std::map<std::string, std::shared_ptr<Image>, std::less<>> images;
    StringTable strings;
    // What reportError answers; every message is kept either way.
    bool reportsErrors = true;
    std::vector<std::string> errors;
    // "name params" of each host action performed, and each write as "name=value" (with
    // " continuous" for a drag) and each bracket as "begin name" / "end name".
    std::vector<std::string> performed;
    std::vector<std::string> writes;
    int updates = 0;
    int reloads = 0;
    int reads = 0;
    // The root that update refreshes (by default the view that asks) and what reload does.
    CushyView* root = nullptr;
    std::function<void(CushyView&)> onReload;
    // View types only this host knows.
    std::function<std::shared_ptr<View>(CushyView&, const IntRect&, const std::string&, const SpecMap&)> makeView;

private:
    ResourceManager* resources_;
};

}  // namespace tw
