// SPDX-License-Identifier: MIT

/// A program without any hardening, for the check to find fault with.
int main()
{
    return 0;
}
