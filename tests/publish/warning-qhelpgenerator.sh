#!/bin/sh
# Stands in for qhelpgenerator: exits 0 and only warns, as the real one does on many faults.
echo "Warning: file index.html not found"
exit 0
