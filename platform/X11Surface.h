// The pixels of one X window on our side: a 32-bit image the size of the window, in
// shared memory when the server allows it, else in our own memory and sent with each
// put. Tiles handed to the window's client are rectangles of it.
#pragma once

#include <X11/Xlib.h>
#include <X11/extensions/XShm.h>

#include <cstdint>

#include "platform/X11Connection.h"

namespace tw {

class X11Surface {
public:
    X11Surface(X11Connection& connection, std::int32_t width, std::int32_t height);
    ~X11Surface();
    X11Surface(const X11Surface&) = delete;
    X11Surface& operator=(const X11Surface&) = delete;

    std::int32_t width() const { return width_; }
    std::int32_t height() const { return height_; }
    std::uint32_t* pixels() { return reinterpret_cast<std::uint32_t*>(image_->data); }
    std::int32_t stride() const { return image_->bytes_per_line / 4; }
    bool sharesMemory() const { return shm_; }

    // Sends a rectangle of the image to the same place of the window.
    void put(::Window window, GC gc, std::int32_t left, std::int32_t top, std::int32_t width, std::int32_t height);
    // Waits until the server has read what was put, so that the pixels may change again.
    void finish();

private:
    X11Connection& connection_;
    std::int32_t width_, height_;
    XImage* image_ = nullptr;
    XShmSegmentInfo segment_{};
    bool shm_ = false;
    bool pending_ = false;
};

}  // namespace tw
