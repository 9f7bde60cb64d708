#pragma once

#include <TavaroMedia/Frames/Image.h>

namespace tavaro::gallery {

/// A window of an application as one would record it, 1600 × 1000.
Image drawApplication();

/// A person before a camera, 1280 × 720.
Image drawPerson();

/// The person's silhouette as a matte, white on black.
Image drawPersonMatte();

}
