#pragma once

#include "app/TWPreview.h"
#include "app/TWPreviewSource.h"
#include "platform/TWOwnFiles.h"

// Writes rows of a preview to a file as comma-separated values for a spreadsheet, in the background: a line of titles
// and a line for each row. Names are shown as in the window; `tidewell preview --json` also has their exact bytes. Main
// thread. Destroying it only prevents the call, because the user has been promised the file.
class TWPreviewExport final {
public:
    // The source is that of the preview. ended is called once, on a later turn, with 0 or the errno.
    TWPreviewExport(TWRunLoop&, const TWOwnFiles&, const TWPreview&, TWPreviewSource, std::vector<TWPreviewRow>,
        const std::string& path, std::function<void(int error)> ended);

private:
    std::unique_ptr<TWBackgroundStream<int>> writing_;
};
