# What hosts may include, as paths in the tree; each is staged as <orvane/NAME.h>. A public header includes
# public headers only, and no header of another library; tools/check-includes holds this list to that.
set(ORVANE_PUBLIC_HEADERS
    foundation/export.h
    tracker/orvane.h)

# The same for headers that the build writes below its "generated" folder.
set(ORVANE_PUBLIC_GENERATED_HEADERS)
