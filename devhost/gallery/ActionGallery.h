#pragma once

class GallerySheet;

//! Key faces and settings panels of the five actions in every state.
namespace ActionGallery {

void addTo(GallerySheet& sheet);

} // namespace ActionGallery
