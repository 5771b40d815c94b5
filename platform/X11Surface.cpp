#include "platform/X11Surface.h"

#include <X11/Xutil.h>
#include <sys/ipc.h>
#include <sys/shm.h>

#include <cstdlib>

#include "platform/Qvd.h"

namespace tw {

X11Surface::X11Surface(X11Connection& c, std::int32_t width, std::int32_t height)
    : connection_(c), width_(width < 1 ? 1 : width), height_(height < 1 ? 1 : height) {
    Display* d = c.display();
    if (c.hasShm()) {
        image_ = XShmCreateImage(d, c.visual(), unsigned(c.depth()), ZPixmap, nullptr, &segment_, unsigned(width_),
                                 unsigned(height_));
        if (image_) {
            segment_.shmid = shmget(IPC_PRIVATE, std::size_t(image_->bytes_per_line) * std::size_t(height_), IPC_CREAT | 0600);
            if (segment_.shmid >= 0) {
                segment_.shmaddr = image_->data = static_cast<char*>(shmat(segment_.shmid, nullptr, 0));
                segment_.readOnly = False;
                c.takeError();
                if (segment_.shmaddr != reinterpret_cast<char*>(-1) && XShmAttach(d, &segment_) && c.sync() == 0) shm_ = true;
                // Marked for removal now: the segment goes when both sides have let it go,
                // even if this process ends abruptly.
                shmctl(segment_.shmid, IPC_RMID, nullptr);
                if (!shm_ && segment_.shmaddr != reinterpret_cast<char*>(-1)) shmdt(segment_.shmaddr);
            }
            if (!shm_) {
                image_->data = nullptr;
                XDestroyImage(image_);
                image_ = nullptr;
            }
        }
    }
    if (!image_) {
        char* data = static_cast<char*>(std::calloc(std::size_t(width_) * std::size_t(height_), 4));
        if (!data) throw Qvd::xOSError("Not enough memory for the window's pixels");
        image_ = XCreateImage(d, c.visual(), unsigned(c.depth()), ZPixmap, 0, data, unsigned(width_), unsigned(height_), 32, 0);
        if (!image_) {
            std::free(data);
            throw Qvd::xWindowsError("The X server cannot take the window's pixels");
        }
    }
    // Our pixels are 0xAARRGGBB words in the machine's order; tell Xlib so, whatever the
    // server's own order, and it converts when they differ.
    image_->byte_order = LSBFirst;
}

X11Surface::~X11Surface() {
    Display* d = connection_.display();
    if (shm_) {
        XShmDetach(d, &segment_);
        XSync(d, False);
        image_->data = nullptr;
        XDestroyImage(image_);
        shmdt(segment_.shmaddr);
    } else {
        XDestroyImage(image_);  // frees the pixels too
    }
}

void X11Surface::put(::Window window, GC gc, std::int32_t left, std::int32_t top, std::int32_t width,
                     std::int32_t height) {
    Display* d = connection_.display();
    if (shm_) {
        XShmPutImage(d, window, gc, image_, left, top, left, top, unsigned(width), unsigned(height), False);
        pending_ = true;
    } else {
        XPutImage(d, window, gc, image_, left, top, left, top, unsigned(width), unsigned(height));
    }
}

void X11Surface::finish() {
    if (pending_) {
        XSync(connection_.display(), False);
        pending_ = false;
    } else {
        XFlush(connection_.display());
    }
}

}  // namespace tw
