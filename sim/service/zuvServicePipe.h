#pragma once
// The service's end of /var/run/kelzuv, held open for as long as the service serves.

namespace zuvsim {

// Creates the FIFO at path, or takes the one a previous run left there, and opens it for
// reading and writing. As a reader the descriptor makes every client's open for writing
// succeed at once and keeps a client's write from meeting a pipe without a reader (SIGPIPE);
// as a writer it keeps the service's own opens for reading from waiting for a client that
// has already come and gone. Bytes a previous run left unread are dropped first, under the
// senders' lock: they may end in the middle of a packet, and the service would take its
// payload for the next meta data. Returns the descriptor, or -1 with a message on stderr.
int holdServicePipe(const char* path);

}  // namespace zuvsim
