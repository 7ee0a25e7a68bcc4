/* The whole interface of the library.  What these headers do not declare is not part of it.
 *
 * The guides that their comments name, iir.md for example, are in the folder docs: of the sources, or of the installed
 * documentation, /usr/share/doc/libmensura-dev on Debian. */
#ifndef MENSURA_MENSURA_H
#define MENSURA_MENSURA_H

#include <mensura/complex.h>
#include <mensura/iir.h>
#include <mensura/kalman.h>
#include <mensura/matrix.h>
#include <mensura/ode.h>
#include <mensura/online.h>
#include <mensura/roots.h>
#include <mensura/smooth.h>
#include <mensura/sos.h>
#include <mensura/spectral.h>

#endif
