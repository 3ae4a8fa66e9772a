#pragma once
// The service's end of /var/run/kelzuv, held open for as long as the service serves.

namespace zuvsim {

// Creates the FIFO at path, or takes the one a previous run left there, and opens it for
// reading and writing (not blocking). As a reader the descriptor makes every client's open for
// writing succeed at once and keeps a client's write from meeting a pipe without a reader
// (SIGPIPE); as a writer it keeps the service's own opens for reading from waiting for a client
// that has already come and gone. Returns the descriptor, or -1 with a message on stderr.
int holdServicePipe(const char* path);

// Reads and drops what the pipe holds now, under the senders' lock, so that no packet is cut
// in two; returns the number of bytes. For a stream that is out of step, where packets can't be
// told apart any more.
long dropUnread(int heldPipe);

}  // namespace zuvsim
