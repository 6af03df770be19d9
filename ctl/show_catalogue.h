// The services of the catalogue.

#pragma once

#include "ctl/arguments.h"
#include "ctl/failure.h"

namespace lineup::ctl {

/// The command "catalogue": lists the services whose names hold every word.
Status showCatalogue(const Arguments& arguments);

}  // namespace lineup::ctl
