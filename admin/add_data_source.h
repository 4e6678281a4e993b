// The end of adding a data source; finish() in admin/flow.h belongs here too. GUI thread only.
#pragma once

// Makes the file data source FileDSNName with the typed attributes DsnInfo: writes the file and, when the connection is
// not to be verified, leaves it so. Otherwise the file serves a connection test and is deleted again; the driver makes
// it when the person has seen the result, with the attributes. A file of that name that was there before is deleted
// then as well, whatever the answer to the overwrite question would have been: the test is told to leave nothing behind
// under the name. Without a driver nothing is written or deleted, and a report says so.
void finishWithAttributes();
