#pragma once

class GallerySheet;

//! Every widget of the kit in every state.
namespace KitGallery {

void addTo(GallerySheet& sheet);

} // namespace KitGallery
