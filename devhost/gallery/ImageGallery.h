#pragma once

class GallerySheet;

//! Every image that is compiled in.
namespace ImageGallery {

void addTo(GallerySheet& sheet);

} // namespace ImageGallery
