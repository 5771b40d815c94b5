// The controller's version check: started when the editor opens and a check is due,
// polled by the slow tick while the editor is in front, and turned on and off by the user.
#include "editor/ModelController.h"

#include "cushy/MessageBox.h"
#include "editor/VersionAnswer.h"
#include "patch/Prefs.h"
#include "platform/Exception.h"
#include "platform/Launcher.h"

namespace tw {

void ModelController::setVersionCheckServer(std::string url, VersionChecker::ConnectionProbe probe) {
    versionCheckUrl_ = std::move(url);
    connectionProbe_ = std::move(probe);
}

void ModelController::startVersionCheck() {
    const std::string productId = versionCheckProductId(descriptor_);
    checker_ = std::make_unique<VersionChecker>(
        VersionChecker::Request{versionCheckUrl_, std::string(), std::string()},
        [productId](const std::string& body) { return readVersionAnswer(body, productId); }, connectionProbe_);
    checker_->start();
}

void ModelController::pollVersionCheck() {
    // The notice waits until the user looks at the editor again.
    if (window_ == nullptr || !window_->isActive()) return;
    if (!checker_ || checker_->isRunning()) return;
    const std::optional<VersionCheckResult> result = checker_->result();
    checker_.reset();
    {
        // A failed check counts too, so that an offline machine asks again only days later.
        Prefs prefs(descriptor_);
        markChecked(prefs, std::time(nullptr));
    }
    if (!result) return;
    AlertType severity = AlertType::info;
    bool show = false;
    std::string text;
    if (result->version > buildNumber) {
        show = true;
        text = result->message;
    }
    if (!result->urgent.empty()) {
        show = true;
        severity = AlertType::warning;
        text = result->urgent;
    }
    if (!show) return;
    if (text.empty()) {
        text = translate("An update of this product is available.");
        if (!result->url.empty()) text += " " + translate("Do you wish to view the information page?");
    }
    const bool offerPage = !result->url.empty();
    const AlertButton pressed = showMessageBox(*rootView_, title(), text, severity,
                                               offerPage ? AlertButtons::yesNo : AlertButtons::ok,
                                               offerPage ? AlertButton::yes : AlertButton::ok);
    if (offerPage && pressed == AlertButton::yes) launchWithSystem(LaunchKind::url, result->url);
}

void ModelController::toggleVersionCheck() {
    if (versionCheckUrl_.empty()) return;
    {
        Prefs prefs(descriptor_);
        versionCheckEnabled_ = toggleCheck(prefs);
    }
    if (versionCheckEnabled_ && !checker_) startVersionCheck();
}

}  // namespace tw
