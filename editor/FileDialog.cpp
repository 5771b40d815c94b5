// One dialog, one file, longer than most: its listing, selection, keys, type-ahead, name
// field and painting all work on the same few fields, and the header says why it is one
// painted dialog rather than a layout.
#include "editor/FileDialog.h"

#include <algorithm>

#include "cushy/MessageBox.h"
#include "platform/Exception.h"
#include "speclang/SpecQuote.h"

namespace tw {

namespace {


// The edges past a rectangle, as the 32-bit coordinates the dialog draws with.
std::int32_t rightOf(const IntRect& r) { return r.left + r.width; }
std::int32_t bottomOf(const IntRect& r) { return r.top + r.height; }

bool inside(const IntRect& r, std::int32_t x, std::int32_t y) {
    return x >= r.left && x < r.right() && y >= r.top && y < r.bottom();
}

// Draws through a canvas cut to `rect`, so that long names end at the rectangle's edge.
template <class Draw>
void clippedTo(Raster32& canvas, const IntRect& rect, Draw draw) {
    const IntRect r = intersectionOf(canvas.bounds(), rect);
    if (r.isEmpty()) return;
    Raster32 inner(canvas.at(r.left, r.top), canvas.stride(), r);
    draw(inner);
}

char32_t lowered(char32_t c) { return c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c; }

bool startsWithNoCase(const std::u16string& text, const std::u16string& prefix) {
    if (prefix.size() > text.size()) return false;
    for (std::size_t i = 0; i < prefix.size(); ++i)
        if (lowered(text[i]) != lowered(prefix[i])) return false;
    return true;
}

void appendUtf8(std::string& text, char32_t c) {
    if (c < 0x80) {
        text += char(c);
    } else if (c < 0x800) {
        text += char(0xC0 | (c >> 6));
        text += char(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        text += char(0xE0 | (c >> 12));
        text += char(0x80 | ((c >> 6) & 0x3F));
        text += char(0x80 | (c & 0x3F));
    } else {
        text += char(0xF0 | (c >> 18));
        text += char(0x80 | ((c >> 12) & 0x3F));
        text += char(0x80 | ((c >> 6) & 0x3F));
        text += char(0x80 | (c & 0x3F));
    }
}

// Removes the last whole UTF-8 character.
void dropLastCharacter(std::string& text) {
    while (!text.empty() && (static_cast<unsigned char>(text.back()) & 0xC0) == 0x80) text.pop_back();
    if (!text.empty()) text.pop_back();
}

void sortByPath(std::vector<Path>& paths) {
    std::sort(paths.begin(), paths.end(), [](const Path& a, const Path& b) { return a.compare(b) < 0; });
}

}  // namespace

FileDialog::FileDialog(HelperFonts fonts, FileDialogSetup setup, SelectionListener listener)
    : fonts_(std::move(fonts)),
      sizes_{fonts_.px(12), fonts_.px(22), fonts_.px(8), fonts_.px(56), fonts_.px(80), fonts_.px(8), fonts_.px(5), fonts_.px(18)},
      setup_(std::move(setup)), listener_(std::move(listener)) {
    width_ = fonts_.px(520);
    runFileDialogScript(setup_.script, *this);
    fileName_ = setup_.fileName;
    layOut();
    setFolder(setup_.startFolder);
    if (setup_.saving || setup_.currentFile.empty()) return;
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        if (entries_[i].equals(setup_.currentFile)) {
            selected_ = std::int32_t(i);
            scrollTo(selected_);
        }
    }
}

// ---- The script's controls ----

int FileDialog::addControl(int id, ControlKind kind, const std::string& label) {
    const auto replaced = setup_.labels.find(id);
    controls_.push_back(Control{id, kind, replaced != setup_.labels.end() ? replaced->second : label, false, {}});
    return 0;
}

int FileDialog::AddPushButton(int id, const std::string& label) { return addControl(id, ControlKind::push, label); }
int FileDialog::AddCheckButton(int id, const std::string& label) { return addControl(id, ControlKind::check, label); }
int FileDialog::AddText(int id, const std::string& text) { return addControl(id, ControlKind::text, text); }
int FileDialog::AddSeparator(int id) { return addControl(id, ControlKind::separator, std::string()); }
int FileDialog::AddComboBox(int) { throw Exception("Unsupported method"); }
int FileDialog::AddControlItem(int, int, const std::string&) { throw Exception("Unsupported method"); }
int FileDialog::AddEditBox(int, const std::string&) { throw Exception("Unsupported method"); }
int FileDialog::AddMenu(int, const std::string&) { throw Exception("Unsupported method"); }
int FileDialog::AddRadioButtonList(int) { throw Exception("Unsupported method"); }
int FileDialog::EnableOpenDropDown(int) { throw Exception("Unsupported method"); }
int FileDialog::EndVisualGroup() { throw Exception("Unsupported method"); }
int FileDialog::MakeProminent(int) { throw Exception("Unsupported method"); }
int FileDialog::StartVisualGroup(int, const std::string&) { throw Exception("Unsupported method"); }

// ---- Geometry ----

IntRect FileDialog::upRect() const { return {sizes_.margin, sizes_.margin, sizes_.upWidth, sizes_.lineHeight}; }

IntRect FileDialog::listRect() const {
    return {sizes_.margin, sizes_.margin + sizes_.lineHeight + sizes_.gap, width_ - 2 * sizes_.margin, visibleRows * sizes_.rowHeight + 2 * fonts_.line()};
}

void FileDialog::layOut() {
    controlsTop_ = bottomOf(listRect()) + sizes_.gap;
    std::int32_t x = sizes_.margin;
    for (Control& control : controls_) {
        const std::int32_t labelWidth = textWidth(*fonts_.regular, control.label);
        std::int32_t w = 0;
        switch (control.kind) {
            case ControlKind::push: w = std::max(sizes_.buttonWidth, labelWidth + fonts_.px(24)); break;
            case ControlKind::check: w = fonts_.px(14 + 6) + labelWidth; break;
            case ControlKind::text: w = labelWidth; break;
            case ControlKind::separator: w = fonts_.px(4); break;
        }
        control.rect = {x, controlsTop_, w, sizes_.lineHeight};
        x += w + sizes_.gap;
    }
    const std::int32_t nameTop = controls_.empty() ? controlsTop_ : controlsTop_ + sizes_.lineHeight + sizes_.gap;
    height_ = nameTop + sizes_.lineHeight + sizes_.gap + sizes_.lineHeight + sizes_.margin;
}

IntRect FileDialog::filterRect() const {
    const std::int32_t w = std::max(textWidth(*fonts_.regular, filterText(0)), textWidth(*fonts_.regular, filterText(1))) + fonts_.px(32);
    return {width_ - sizes_.margin - w, height_ - sizes_.margin - 2 * sizes_.lineHeight - sizes_.gap, w, sizes_.lineHeight};
}

IntRect FileDialog::nameRect() const {
    if (!setup_.saving) return {};
    const std::int32_t left = sizes_.margin + textWidth(*fonts_.regular, setup_.fileNameLabel) + sizes_.gap;
    return {left, filterRect().top, filterRect().left - sizes_.gap - left, sizes_.lineHeight};
}

IntRect FileDialog::okRect() const {
    return {width_ - sizes_.margin - 2 * sizes_.buttonWidth - sizes_.gap, height_ - sizes_.margin - sizes_.lineHeight, sizes_.buttonWidth, sizes_.lineHeight};
}

IntRect FileDialog::cancelRect() const {
    return {width_ - sizes_.margin - sizes_.buttonWidth, height_ - sizes_.margin - sizes_.lineHeight, sizes_.buttonWidth, sizes_.lineHeight};
}

IntRect FileDialog::rowRect(std::size_t entry) const {
    const auto row = std::int32_t(entry) - scroll_;
    if (row < 0 || row >= visibleRows || entry >= entries_.size()) return {};
    const IntRect list = listRect();
    return {list.left + fonts_.line(), list.top + fonts_.line() + row * sizes_.rowHeight,
            list.width - 2 * fonts_.line() - sizes_.scrollbarWidth, sizes_.rowHeight};
}

IntRect FileDialog::controlRect(int id) const {
    for (const Control& control : controls_)
        if (control.id == id) return control.rect;
    return {};
}

std::string FileDialog::filterText(int filter) const {
    return filter == 0 ? setup_.typeLabel + " (*." + setup_.extension + ")" : setup_.allFilesLabel + " (*.*)";
}

int FileDialog::partAt(std::int32_t x, std::int32_t y) const {
    if (inside(upRect(), x, y)) return upPart;
    if (inside(filterRect(), x, y)) return filterPart;
    if (inside(okRect(), x, y)) return okPart;
    if (inside(cancelRect(), x, y)) return cancelPart;
    for (std::size_t i = 0; i < controls_.size(); ++i)
        if (inside(controls_[i].rect, x, y)) return int(i);
    return none;
}

// ---- State ----

bool FileDialog::setFolder(const Path& folder) {
    if (folder.empty()) return false;
    const Path target = folder.isFolder() ? folder : Path::parse(folder.toString() + "/");
    try {
        if (target.kind() != Path::Kind::folder) return false;
    } catch (const std::exception&) {
        return false;
    }
    folder_ = target;
    reload();
    return true;
}

// A folder that can't be read shows as empty: the user goes elsewhere.
void FileDialog::reload() {
    std::vector<Path> folders, files;
    try {
        folders = folder_.listFolders();
        files = folder_.list(filter_ == 0 ? setup_.extension : std::string());
    } catch (const std::exception&) {
        folders.clear();
        files.clear();
    }
    sortByPath(folders);
    sortByPath(files);
    entries_ = std::move(folders);
    entries_.insert(entries_.end(), files.begin(), files.end());
    selected_ = -1;
    scroll_ = 0;
    repaint();
}

void FileDialog::setFileName(const std::string& name) {
    fileName_ = name;
    nameSelected_ = false;
    repaint();
}

Path FileDialog::getSelection() const { return selected_ < 0 ? Path() : entries_[std::size_t(selected_)]; }

void FileDialog::scrollTo(std::int32_t index) {
    if (index < scroll_) scroll_ = index;
    if (index >= scroll_ + visibleRows) scroll_ = index - visibleRows + 1;
    scroll_ = std::clamp(scroll_, 0, std::max(0, std::int32_t(entries_.size()) - visibleRows));
}

void FileDialog::select(std::int32_t index) {
    if (entries_.empty()) return;
    index = std::clamp(index, 0, std::int32_t(entries_.size()) - 1);
    scrollTo(index);
    repaint();
    if (index == selected_) return;
    selected_ = index;
    const Path& entry = entries_[std::size_t(index)];
    if (entry.isFolder()) return;
    if (setup_.saving) {
        fileName_ = entry.stem();
        nameSelected_ = false;
    }
    else if (listener_) listener_(entry);
}

void FileDialog::goUp() {
    const Path child = folder_;
    if (!setFolder(folder_.parent())) return;
    for (std::size_t i = 0; i < entries_.size(); ++i)
        if (entries_[i].equals(child)) select(std::int32_t(i));
}

void FileDialog::activate() {
    if (selected_ >= 0 && entries_[std::size_t(selected_)].isFolder()) {
        setFolder(entries_[std::size_t(selected_)]);
        return;
    }
    if (!setup_.saving) {
        if (selected_ >= 0) choose(entries_[std::size_t(selected_)]);
        return;
    }
    if (fileName_.empty() || folder_.empty()) return;
    // A name the file system can't take, or would hide, is refused in words: a folder
    // part, a leading dot ("..", which with the extension would be a hidden file), or
    // more bytes than one name may have.
    refusal_.clear();
    if (fileName_.find('/') != std::string::npos) {
        refusal_ = setup_.slashRefusal;
    } else if (fileName_.front() == '.') {
        refusal_ = setup_.dotRefusal;
    }
    std::string name = fileName_;
    if (refusal_.empty()) {
        const std::string extension = Path::parse(fileName_).extension();
        const bool hasSuffix = extension.size() == setup_.extension.size() &&
                               std::equal(extension.begin(), extension.end(), setup_.extension.begin(),
                                          [](char a, char b) { return lowered(char32_t(a)) == lowered(char32_t(b)); });
        if (!hasSuffix) name += "." + setup_.extension;
        if (name.size() > maxNameBytes) refusal_ = setup_.lengthRefusal;
    }
    if (!refusal_.empty()) {
        tell(refusal_);
        return;
    }
    const Path file = folder_.join(name);
    if (confirmReplace(file)) choose(file);
}

void FileDialog::tell(const std::string& text) {
    if (owner_ == nullptr) return;
    MessageBox box(fonts_, text, AlertType::warning, AlertButtons::ok, AlertButton::ok);
    const std::unique_ptr<Window> window = owner_->openDialog(box, setup_.title, (owner_->width() - box.width()) / 2,
                                                              (owner_->height() - box.height()) / 2, box.width(),
                                                              box.height());
    owner_->runModal([&] { return box.closed(); });
}

bool FileDialog::confirmReplace(const Path& file) {
    if (setup_.replacePrompt.empty() || owner_ == nullptr) return true;
    try {
        if (file.kind() == Path::Kind::absent) return true;
    } catch (const std::exception&) {
        return true;  // the save itself will say what is wrong
    }
    std::string text = setup_.replacePrompt;
    if (const std::size_t at = text.find("^F"); at != std::string::npos) text.replace(at, 2, file.fileName());
    MessageBox box(fonts_, text, AlertType::warning, AlertButtons::yesNo, AlertButton::no);
    const std::unique_ptr<Window> window = owner_->openDialog(box, setup_.title, (owner_->width() - box.width()) / 2,
                                                              (owner_->height() - box.height()) / 2, box.width(),
                                                              box.height());
    owner_->runModal([&] { return box.closed(); });
    return box.result() == AlertButton::yes;
}

void FileDialog::choose(const Path& file) {
    result_ = file;
    closed_ = true;
}

void FileDialog::press(int part) {
    switch (part) {
        case upPart: goUp(); return;
        case filterPart:
            filter_ ^= 1;
            reload();
            return;
        case okPart: activate(); return;
        case cancelPart: closed_ = true; return;
        default: break;
    }
    if (part < 0 || std::size_t(part) >= controls_.size()) return;
    Control& control = controls_[std::size_t(part)];
    if (control.kind == ControlKind::check) {
        control.checked = !control.checked;
        repaint();
    } else if (control.kind == ControlKind::push) {
        // A folder that isn't there leads nowhere, without an error.
        if (const auto jump = setup_.jumps.find(control.id); jump != setup_.jumps.end()) setFolder(jump->second);
    }
}

void FileDialog::typeAhead(char32_t c, std::uint32_t time) {
    if (time - lastTyped_ > typeAheadMs) typed_.clear();
    lastTyped_ = time;
    appendUtf8(typed_, c);
    const std::u16string prefix = fromUtf8(typed_);
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        if (startsWithNoCase(fromUtf8(entries_[i].fileName()), prefix)) {
            select(std::int32_t(i));
            return;
        }
    }
}

// ---- Running ----

Path FileDialog::run(Window& owner) {
    owner_ = &owner;
    const std::int32_t x = (owner.width() - width_) / 2, y = (owner.height() - height_) / 2;
    const std::unique_ptr<Window> dialog = owner.openDialog(*this, setup_.title, x, y, width_, height_);
    dialog_ = dialog.get();
    try {
        owner.runModal([&] { return closed_; });
    } catch (...) {
        dialog_ = owner_ = nullptr;
        throw;
    }
    dialog_ = owner_ = nullptr;
    return result_;
}

void FileDialog::repaint() {
    if (dialog_ != nullptr) dialog_->invalidate(0, 0, width_, height_);
}

// ---- Events ----

void FileDialog::mouseDown(const MouseEvent& event) {
    const IntRect list = listRect();
    if (inside(list, event.x, event.y)) {
        const auto count = std::int32_t(entries_.size());
        if (event.x >= rightOf(list) - 1 - sizes_.scrollbarWidth && count > visibleRows) {
            const std::int32_t thumbTop = list.top + 1 + (list.height - 2) * scroll_ / count;
            scroll_ = std::clamp(scroll_ + (event.y < thumbTop ? -visibleRows : visibleRows), 0, count - visibleRows);
            repaint();
            return;
        }
        const std::int32_t row = scroll_ + (event.y - list.top - fonts_.line()) / sizes_.rowHeight;
        if (row >= count) return;
        const bool twice = row == lastClickRow_ && event.time - lastClickTime_ <= doubleClickMs;
        lastClickRow_ = twice ? -1 : row;
        lastClickTime_ = event.time;
        select(row);
        if (twice) activate();
        return;
    }
    pressed_ = partAt(event.x, event.y);
}

void FileDialog::mouseUp(const MouseEvent& event) {
    const int pressed = pressed_;
    pressed_ = none;
    if (pressed != none && partAt(event.x, event.y) == pressed) press(pressed);
}

void FileDialog::mouseWheel(const MouseEvent& event) {
    const std::int32_t limit = std::max(0, std::int32_t(entries_.size()) - visibleRows);
    scroll_ = std::clamp(scroll_ - 3 * event.wheel, 0, limit);
    repaint();
}

bool FileDialog::keyDown(const KeyEvent& event) {
    const auto last = std::int32_t(entries_.size()) - 1;
    switch (event.key) {
        case Key::up: select(selected_ < 0 ? 0 : selected_ - 1); return true;
        case Key::down: select(selected_ + 1); return true;
        case Key::pageUp: select(selected_ - visibleRows); return true;
        case Key::pageDown: select(selected_ < 0 ? visibleRows - 1 : selected_ + visibleRows); return true;
        case Key::home: select(0); return true;
        case Key::end: select(last); return true;
        case Key::enter: activate(); return true;
        case Key::escape: closed_ = true; return true;
        case Key::backspace:
            if (setup_.saving) {
                if (nameSelected_) fileName_.clear();
                else dropLastCharacter(fileName_);
                nameSelected_ = false;
                repaint();
            } else {
                goUp();
            }
            return true;
        case Key::character:
            if (event.ctrl && setup_.saving && (event.character == U'a' || event.character == U'A')) {
                nameSelected_ = !fileName_.empty();
                repaint();
                return true;
            }
            if (event.ctrl || event.character < 0x20 || event.character == 0x7F) return false;
            if (setup_.saving) {
                // Typing names a new file: Enter then saves it rather than the selection.
                if (nameSelected_) fileName_.clear();
                nameSelected_ = false;
                appendUtf8(fileName_, event.character);
                selected_ = -1;
                repaint();
            } else {
                typeAhead(event.character, event.time);
            }
            return true;
        default: return false;
    }
}

void FileDialog::closeRequested() { closed_ = true; }

// ---- Painting ----

void FileDialog::paint(const PixelTile& tile) {
    Raster32 canvas(tile.pixels, tile.stride, IntRect{tile.left, tile.top, tile.width, tile.height});
    const auto px = [this](double units) { return fonts_.px(units); };
    const std::int32_t line = fonts_.line();
    look::drawPanel(canvas, IntRect{0, 0, width_, height_}, line);
    std::int32_t fontHeight, ascent;
    fonts_.regular->getMetrics(fontHeight, ascent);
    auto baseline = [&](const IntRect& r) { return r.top + (r.height - fontHeight) / 2 + ascent; };

    look::drawButton(canvas, upRect(), setup_.upLabel, false, fonts_);
    // The current folder, its start cut away when it is too long, so that its end shows.
    const IntRect pathRect{rightOf(upRect()) + sizes_.gap, sizes_.margin, width_ - 2 * sizes_.margin - sizes_.upWidth - sizes_.gap, sizes_.lineHeight};
    look::fillRect(canvas, pathRect, look::field);
    look::frameRect(canvas, pathRect, look::panelEdge, line);
    std::string shown = folder_.toString();
    const std::int32_t room = pathRect.width - 2 * sizes_.textInset;
    if (textWidth(*fonts_.regular, shown) > room) {
        while (!shown.empty() && textWidth(*fonts_.regular, "..." + shown) > room) {
            shown.erase(0, 1);
            while (!shown.empty() && (static_cast<unsigned char>(shown.front()) & 0xC0) == 0x80) shown.erase(0, 1);
        }
        shown = "..." + shown;
    }
    clippedTo(canvas, pathRect, [&](Raster32& inner) {
        drawText(inner, *fonts_.regular, pathRect.left + sizes_.textInset, baseline(pathRect), shown);
    });

    const IntRect list = listRect();
    look::fillRect(canvas, list, look::field);
    look::frameRect(canvas, list, look::panelEdge, line);
    for (std::size_t i = std::size_t(scroll_); i < entries_.size() && i < std::size_t(scroll_ + visibleRows); ++i) {
        const IntRect row = rowRect(i);
        if (std::int32_t(i) == selected_) look::fillRect(canvas, row, look::selection);
        const Path& entry = entries_[i];
        const std::int32_t iconTop = row.top + (sizes_.rowHeight - px(10)) / 2;
        if (entry.isFolder()) {
            look::fillRect(canvas, {row.left + px(4), iconTop, px(6), px(2)}, look::accent);
            look::fillRect(canvas, {row.left + px(4), iconTop + px(2), px(13), px(8)}, look::accent);
        } else {
            look::frameRect(canvas, {row.left + px(6), iconTop - px(1), px(9), px(12)}, look::dimText, line);
            look::fillRect(canvas, {row.left + px(8), iconTop + px(3), px(5), line}, look::dimText);
            look::fillRect(canvas, {row.left + px(8), iconTop + px(6), px(5), line}, look::dimText);
        }
        clippedTo(canvas, row, [&](Raster32& inner) {
            drawText(inner, *fonts_.regular, row.left + px(24), baseline(row), entry.fileName());
        });
    }
    const auto count = std::int32_t(entries_.size());
    if (count > visibleRows) {
        const IntRect track{rightOf(list) - 1 - sizes_.scrollbarWidth, list.top + 1, sizes_.scrollbarWidth, list.height - 2};
        const std::int32_t top = track.top + track.height * scroll_ / count;
        const std::int32_t length = std::max(px(12), track.height * visibleRows / count);
        look::fillRect(canvas, track, look::panel);
        look::fillRect(canvas, {track.left + px(2), top, sizes_.scrollbarWidth - px(4), std::min(length, bottomOf(track) - top)},
                       look::panelEdge);
    }

    for (const Control& control : controls_) {
        const IntRect& r = control.rect;
        switch (control.kind) {
            case ControlKind::push: look::drawButton(canvas, r, control.label, false, fonts_); break;
            case ControlKind::check: {
                const IntRect box{r.left, r.top + (sizes_.lineHeight - px(14)) / 2, px(14), px(14)};
                look::fillRect(canvas, box, look::field);
                look::frameRect(canvas, box, look::panelEdge, line);
                if (control.checked) look::fillRect(canvas, {box.left + px(3), box.top + px(3), px(8), px(8)}, look::accent);
                drawText(canvas, *fonts_.regular, rightOf(box) + px(6), baseline(r), control.label);
                break;
            }
            case ControlKind::text: drawText(canvas, *fonts_.regular, r.left, baseline(r), control.label); break;
            case ControlKind::separator: look::fillRect(canvas, {r.left + line, r.top + px(3), line, r.height - px(6)}, look::panelEdge); break;
        }
    }

    if (setup_.saving) {
        const IntRect name = nameRect();
        drawText(canvas, *fonts_.regular, sizes_.margin, baseline(name), setup_.fileNameLabel);
        look::fillRect(canvas, name, look::field);
        look::frameRect(canvas, name, look::accent, line);
        std::int32_t end = 0;
        clippedTo(canvas, {name.left + line, name.top + line, name.width - 2 * line, name.height - 2 * line}, [&](Raster32& inner) {
            if (nameSelected_)
                look::fillRect(inner, {name.left + sizes_.textInset - line, name.top + px(3), textWidth(*fonts_.regular, fileName_) + 2 * line, name.height - px(6)},
                               look::selection);
            end = drawText(inner, *fonts_.regular, name.left + sizes_.textInset, baseline(name), fileName_);
        });
        if (selected_ < 0 || entries_[std::size_t(selected_)].isFolder())
            look::fillRect(canvas, {std::min(name.left + sizes_.textInset + end, rightOf(name) - px(3)), name.top + px(4), line, name.height - px(8)},
                           look::text);
    }

    const IntRect filter = filterRect();
    look::fillRect(canvas, filter, look::field);
    look::frameRect(canvas, filter, look::panelEdge, line);
    drawText(canvas, *fonts_.regular, filter.left + sizes_.textInset + px(2), baseline(filter), filterText(filter_));
    // A small downward triangle: the filter switches on a click.
    for (std::int32_t i = 0; i < px(4); ++i)
        look::fillRect(canvas, {rightOf(filter) - px(16) + i, filter.top + px(9) + i, px(8) - 2 * i, 1}, look::text);

    look::drawButton(canvas, okRect(), setup_.okLabel, true, fonts_);
    look::drawButton(canvas, cancelRect(), setup_.cancelLabel, false, fonts_);
}

}  // namespace tw
