/// @file
/// The framework's reader of SGI image files (".rgb", ".rgba", ".bw", ".sgi") that
/// renderers use for textures.
#pragma once

/// Reads an SGI image, verbatim or run-length encoded, into a buffer ready for
/// glTexImage1D/2D with GL_RGBA and GL_UNSIGNED_BYTE. `fileName` is a framework path
/// ("\" and "/" both work). The file is opened twice: once only to be closed again, then
/// for the reading, as the framework's texture loading has always done.
///
/// The buffer holds width x height pixels of four bytes in memory order red, green, blue,
/// alpha, rows packed without padding. Rows come in file order: the first row is the
/// bottom of the picture, as SGI stores it (also OpenGL's texture origin). Planes map to
/// pixels by the file's channel count:
///   - 4 or more: planes 0 to 3 as red, green, blue, alpha; further planes are ignored;
///   - 3: planes 0 to 2, alpha 255;
///   - 2: plane 0 as grey in red, green and blue, plane 1 as alpha;
///   - 1: plane 0 as grey, alpha 255.
///
/// On success the outputs are the texture dimension (1 for a one-row image, else 2), the
/// width, the height and the file's channel count (not capped at 4), and the caller owns
/// the buffer and releases it with free(). A run-length row whose packets end before the
/// row is full leaves the rest of that row's plane at 0.
///
/// Refused, with null returned and all four outputs 0: a path that is not a regular file
/// that can be opened and read (FIFOs and devices are refused without waiting), or a file
/// of more than 2 GiB; any channel size but one byte (16-bit SGI images are not
/// supported); a width, height or channel count of 0; a picture whose RGBA buffer would
/// not stay below 2 GiB (its byte size must fit an int); verbatim planes or run-length
/// offset tables that the file is too short to hold; run-length tables whose row sizes
/// add up to fewer bytes than filling the picture takes (two bytes give at most 127
/// pixels), or in a file too small to hold that many bytes (rows may share theirs), so
/// that a small file cannot make the reader allocate and fill a huge picture; a run-length row whose start or size
/// lies outside the file; a packet that would pass the end of its row or read past the
/// row's encoded bytes. The magic number is not checked. Null output pointers are skipped.
unsigned int* readTexture(const char* fileName, int* dimension, int* width, int* height, int* components);
