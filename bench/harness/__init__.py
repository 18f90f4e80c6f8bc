# SPDX-License-Identifier: MIT
"""What all rows of the benchmark share."""
