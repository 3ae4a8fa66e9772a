#pragma once
// Constant texts about storage devices for the service: health and status names, SCSI
// protocol names, and the attribute files of a storage adapter. Plain initialised data.

// "Unknown" stands at index 0 of both name lists.
extern const char* const healthNames[4];
// "Unknown", then alphabetical.
extern const char* const statusNames[27];
// By SCSI protocol identifier; one entry per value of the four-bit identifier, so such a
// value needs no index check. Identifiers without a name give the number as text ("0xb").
extern const char* const protocolNames[16];
// Relative paths, each with its leading slash, to append to a storage adapter's directory.
extern const char* const adapterAttributePaths[12];
// The same kind of path one directory level further up.
extern const char* const adapterParentAttributePaths[4];
