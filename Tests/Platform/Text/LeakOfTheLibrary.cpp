// glibc never frees the list of folders that it makes of LOCPATH, by which tests find a locale.

extern "C" const char* __lsan_default_suppressions();

extern "C" const char* __lsan_default_suppressions() {
  return "leak:__argz_add_sep";
}
