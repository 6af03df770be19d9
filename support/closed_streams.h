// Standard streams that whoever started the program has closed.

#pragma once

namespace lineup {

/// Opens /dev/null, with `access` (O_RDONLY or O_RDWR), for each standard stream that is closed:
/// otherwise the next socket or file opened would get that descriptor and receive what is printed.
/// With O_RDONLY, writing to such a stream fails.
void openClosedStreams(int access);

}  // namespace lineup
