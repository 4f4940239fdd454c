#include "c_caller.h"

#include <math.h>
#include <stdlib.h>
#include <string.h>

#include <orvane/util.h>

#define CHECK(condition)                                                                                     \
    do {                                                                                                     \
        if (!(condition))                                                                                    \
            return __LINE__;                                                                                 \
    } while (0)

static int notices = 0;

static void count_notice(const char *text, void *context)
{
    if (text && context == &notices)
        ++notices;
}

static int same_and_freed(char *text, const char *expected)
{
    const int same = text && strcmp(text, expected) == 0;
    free(text);
    return same;
}

static int lists_and_arrays(void)
{
    Tbl *list = newtbl(2);
    Arr *array = newarr();
    int value = 7;
    CHECK(list && array);
    CHECK(pushtbl(list, &value) == 0);
    CHECK(gettbl(list, 0) == &value && maxtbl(list) == 1);
    CHECK(setarr(array, "key", &value) == NULL && getarr(array, "key") == &value);
    freetbl(list, NULL);
    list = keysarr(array);
    CHECK(maxtbl(list) == 1 && strcmp((const char *)gettbl(list, 0), "key") == 0);
    freetbl(list, NULL);
    freearr(array, NULL);
    return 0;
}

static int parameter_files(void)
{
    static const char text[] = "name: quakes\nlist: [a, b]\nmap: {x: 1}\n";
    Pf *pf = NULL;
    PfValue value;
    int64_t line = 0, column = 0;
    CHECK(pfparse(text, sizeof text - 1, "c.pf", &pf) == 0);
    CHECK(pfget(pf, "name", &value) == PFSTRING && strcmp(value.text, "quakes") == 0);
    CHECK(pfget(pf, "list", &value) == PFLIST && pfmaxtbl(value.pf) == 2);
    CHECK(pfget(pf, "map", &value) == PFARRAY);
    CHECK(pfwhere(pf, "map", &line, &column) == 0 && line == 3 && column == 6);
    CHECK(pfwherekey(pf, "map", &line, &column) == 0 && column == 1);
    CHECK(strcmp(pfname(pf), "c.pf") == 0);
    Tbl *keys = pfkeys(pf);
    CHECK(maxtbl(keys) == 3);
    freetbl(keys, NULL);
    pffree(pf);
    CHECK(pfread("/nonexistent/file.pf", &pf) < 0 && pf == NULL);
    return 0;
}

static int logs(void)
{
    elog_clear();
    elog_log("%s %d", "line", 1);
    CHECK(elog_count() == 1);
    CHECK(same_and_freed(elog_string(0), "line 1"));
    elog_clear();
    elog_set_notice_hook(count_notice, &notices);
    elog_notice("heard %d", 1);
    elog_set_notice_hook(NULL, NULL);
    CHECK(notices == 1 && elog_count() == 0);
    return 0;
}

static int paths_and_text(void)
{
    char text[] = "  blank \n";
    CHECK(same_and_freed(abspath("/a/./b/../c"), "/a/c"));
    CHECK(is_present("/") == 1 && is_present("/nonexistent") == 0);
    CHECK(dfiletime("/nonexistent") == ORVANE_NULL_TIME);
    CHECK(strcmp(strtrim(text), "blank") == 0);
    CHECK(whitespace(" \t") == 1 && whitespace("x") == 0);
    const double random = disordered();
    CHECK(random >= 0 && random < 1);
    return 0;
}

static int times(void)
{
    double time = 0;
    CHECK(same_and_freed(epoch2str(0.0, "%Y-%m-%d"), "1970-01-01"));
    CHECK(same_and_freed(zepoch2str(0.0, "%H %Z", "Asia/Tokyo"), "09 JST"));
    CHECK(is_epoch_string("1970-01-02", &time) == 1 && fabs(time - 86400.0) < 1e-9);
    CHECK(zis_epoch_string("1970-01-02", "Asia/Tokyo", &time) == 1 && fabs(time - 54000.0) < 1e-9);
    CHECK(same_and_freed(strtdelta(180.0), "3 minutes"));
    char *local = strlocaltime(0.0);
    CHECK(local != NULL);
    free(local);
    CHECK(std_now() > 1.5e9);
    return 0;
}

int call_from_c(void)
{
    int (*const groups[])(void) = {lists_and_arrays, parameter_files, logs, paths_and_text, times};
    for (size_t i = 0; i < sizeof groups / sizeof *groups; ++i) {
        const int line = groups[i]();
        if (line != 0)
            return line;
    }
    return 0;
}
