// A layout running in memory for the Cushy tests: the map host with the product's
// resources, a root view handed to a window double, and probe views that record what
// reaches them.
#pragma once

#include "cushy/ContainerView.h"
#include "cushy/CushyView.h"
#include "cushy/CushyWindowClient.h"
#include "cushy/HelperLook.h"
#include "cushy/HintWindow.h"
#include "cushy/HintedView.h"
#include "cushy/ViewFactory.h"
#include "cushy/doubles/MapHost.h"
#include "cushy/doubles/WindowDouble.h"
#include "graphics/ResourceManager.h"
#include "platform/Exception.h"
#include "platform/TempFolder.h"
#include "speclang/SpecColor.h"
#include "speclang/SpecQuote.h"

#include <memory>
#include <string>
#include <vector>

namespace tw::test {

// A view of type "probe": paints its `color`, takes presses unless `claims: false`, and
// writes every event to the shared log as "<name> <event>".
class ProbeView : public HintedView {
public:
    ProbeView(std::vector<std::string>& log, const SpecMap& spec)
        : log_(log), name_(unquote(lookup(spec, "name"))), colour_(parseColor(lookup(spec, "color"), 0xFF808080)),
          claims_(toBool(lookup(spec, "claims"), true)), value_(unquote(lookup(spec, "value"))) {}

    void paint(Raster32& canvas, const IntRect& clip) override {
        ++paints;
        if (!paintFault.empty()) throw Exception(paintFault);
        look::fillRect(canvas, intersectionOf(clip, size_), colour_);
    }
    bool mouseDown(const MouseEvent& e) override {
        log_.push_back(name_ + " down " + std::to_string(e.x) + "," + std::to_string(e.y));
        HintedView::mouseDown(e);
        if (capture) captureMouse();
        return claims_;
    }
    void mouseUp(const MouseEvent& e) override {
        log_.push_back(name_ + " up " + std::to_string(e.x) + "," + std::to_string(e.y));
        HintedView::mouseUp(e);
    }
    void mouseMove(const MouseEvent& e) override {
        log_.push_back(name_ + " move " + std::to_string(e.x) + "," + std::to_string(e.y));
        HintedView::mouseMove(e);
    }
    void mouseEnter(std::uint32_t t) override {
        log_.push_back(name_ + " enter");
        HintedView::mouseEnter(t);
    }
    void mouseLeave(std::uint32_t t) override {
        log_.push_back(name_ + " leave");
        HintedView::mouseLeave(t);
    }
    bool rightMouseDown(const MouseEvent&) override {
        log_.push_back(name_ + " right");
        return claims_;
    }
    void refresh() override {
        ++refreshes;
        if (!refreshFault.empty()) throw Exception(refreshFault);
    }
    std::string valueText() override { return value_; }

    int paints = 0;
    int refreshes = 0;
    bool capture = false;
    // Non-empty: the paint or the refresh throws this message.
    std::string paintFault, refreshFault;

private:
    std::vector<std::string>& log_;
    std::string name_;
    std::uint32_t colour_;
    bool claims_;
    std::string value_;
};

// A view of type "box": a container whose `views` become its children.
class BoxView : public ContainerView {};

struct Editor {
    explicit Editor(IntRect rect = {0, 0, 200, 100})
        : resources("Tidewake", binary.str()), host(&resources),
          root(std::make_shared<CushyView>(host, rect)), client(root), window(client, rect.width, rect.height) {
        host.root = root.get();
        hintWindow = std::make_shared<HintWindow>(resources.getFont("{ color: 0xFFE8F1F5 }"), Zoom());
        root->setHintWindow(hintWindow);
        host.makeView = [this](CushyView& layout, const IntRect& rect, const std::string& type,
                               const SpecMap& spec) -> std::shared_ptr<View> {
            if (type == "probe") {
                auto probe = std::make_shared<ProbeView>(log, spec);
                probes.push_back(probe);
                return probe;
            }
            if (type == "box") {
                auto box = std::make_shared<BoxView>();
                box->resize(rect);
                for (const std::string& item : parseList(lookup(spec, "views")))
                    createView(layout, *box, parseMap(item));
                return box;
            }
            return nullptr;
        };
    }
    ~Editor() { client.attach(nullptr); }

    void attach() { client.attach(&window); }
    // Loads a layout text under the name "test".
    void load(const std::string& text) {
        host.layouts["test"] = text;
        root->load("test");
    }
    ProbeView& probe(std::size_t i) { return *probes.at(i); }

    TempFolder binary;
    ResourceManager resources;
    MapHost host;
    std::shared_ptr<CushyView> root;
    CushyWindowClient client;
    WindowDouble window;
    std::shared_ptr<HintWindow> hintWindow;
    std::vector<std::string> log;
    std::vector<std::shared_ptr<ProbeView>> probes;
};

}  // namespace tw::test
