# SPDX-License-Identifier: MIT
"""The rows of the benchmark, one file for each group that is measured together."""
