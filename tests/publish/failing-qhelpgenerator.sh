#!/bin/sh
# Stands in for qhelpgenerator: fails with a message of its own and no warning line.
echo "Error: cannot read the help project"
exit 3
