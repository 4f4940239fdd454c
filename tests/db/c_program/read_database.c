/* A program in C11 that knows <orvane/db.h> alone, and the shared library. Makes a database in a temporary
 * folder and reads it; fails with the number of the line that is wrong. */
#define _POSIX_C_SOURCE 200809L /* mkdtemp */

#include <orvane/db.h>

#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#define CHECK(condition)                                                                                     \
    do {                                                                                                     \
        if (!(condition)) {                                                                                  \
            char *log = elog_string(0);                                                                      \
            fprintf(stderr, "line %d: not so: %s\n%s\n", __LINE__, #condition, log);                         \
            free(log);                                                                                       \
            return 1;                                                                                        \
        }                                                                                                    \
    } while (0)

static char folder[] = "/tmp/orvane-c-XXXXXX";

static const char schema[] =
    "attributes:\n"
    "  sta: {type: string, width: 6, format: \"%-6s\", null: \"-\"}\n"
    "  lat: {type: real, width: 9, format: \"%9.4f\", null: \"-999.0000\", units: degrees}\n"
    "  id: {type: integer, width: 4, format: \"%4d\", null: \"-1\"}\n"
    "relations:\n"
    "  site: {fields: [sta, lat], primary: [sta]}\n"
    "  thing: {fields: [id, sta], primary: [id], defines: id}\n";

static void path_of(char *path, size_t capacity, const char *name)
{
    snprintf(path, capacity, "%s/%s", folder, name);
}

static int write_file(const char *name, const char *text)
{
    char path[256];
    path_of(path, sizeof path, name);
    FILE *file = fopen(path, "w");
    if (!file)
        return 0;
    const int written = fputs(text, file) >= 0;
    return fclose(file) == 0 && written;
}

static int remove_files(void)
{
    static const char *const names[] = {"tiny.yaml", "quakes", "quakes.site", "shipped"};
    int removed = 1;
    for (size_t i = 0; i < sizeof names / sizeof names[0]; ++i) {
        char path[256];
        path_of(path, sizeof path, names[i]);
        removed = unlink(path) == 0 && removed;
    }
    return rmdir(folder) == 0 && removed;
}

static int read_records(Dbptr db)
{
    Dbptr site = dblookup(db, "", "site", "dbALL", "1");
    char text[32];
    CHECK(site.table == 0 && site.field == dbALL && site.record == 1);
    CHECK(dbget(site, text, sizeof text) == 16 && strcmp(text, "NIL      33.6506") == 0);
    CHECK(dbget(site, text, 16) == 16); /* no room: nothing is written */

    Dbptr lat = dblookup(site, "", "", "lat", "");
    CHECK(lat.field == 1 && lat.record == 1);
    DbValue value;
    CHECK(dbgetv(lat, NULL, &value) == 0 && value.type == dbREAL && value.real == 33.6506);
    CHECK(dbgetv(lat, "sta", &value) == 0 && value.type == dbSTRING && strcmp(value.text, "NIL") == 0);
    free(value.text);

    int64_t first = -1, end = -1;
    CHECK(dbget_range(site, &first, &end) == 0 && first == 1 && end == 2);
    CHECK(dbget(site, NULL, 0) == 16);
    site.record = dbSCRATCH;
    CHECK(dbget(site, text, sizeof text) == 16 && strcmp(text, "NIL      33.6506") == 0);
    site.record = dbNULL;
    CHECK(dbget(site, text, sizeof text) == 16 && strcmp(text, "-      -999.0000") == 0);
    return 0;
}

static int read_metadata(Dbptr db)
{
    const char *name = NULL;
    int64_t number = -1;
    CHECK(dbquery(db, dbSCHEMA_NAME, &name) == 0 && strcmp(name, "tiny") == 0);
    CHECK(dbquery(db, dbTABLE_COUNT, &number) == 0 && number == 2);
    CHECK(dbquery(db, dbTABLE_NAME, &name) == dbERROR_ARGUMENT && name == NULL);

    Tbl *tables = NULL;
    CHECK(dbquery(db, dbSCHEMA_TABLES, &tables) == 0 && maxtbl(tables) == 2);
    CHECK(strcmp(gettbl(tables, 1), "thing") == 0);
    freetbl(tables, free);

    Arr *links = NULL;
    CHECK(dbquery(db, dbLINK_FIELDS, &links) == 0 && strcmp(getarr(links, "id"), "thing") == 0);
    freearr(links, free);

    Tbl *left = NULL, *right = NULL;
    CHECK(dbfind_join_keys(dblookup(db, "", "site", "", ""), dblookup(db, "", "thing", "", ""), &left,
                           &right) == 0);
    CHECK(maxtbl(left) == 1 && strcmp(gettbl(left, 0), "sta") == 0 && maxtbl(right) == 1);
    freetbl(left, free);
    freetbl(right, free);
    return 0;
}

/* The shipped schema lies where the shared library finds it from its own place. */
static int read_shipped_schema(void)
{
    char path[256];
    const char *name = NULL;
    Dbptr db;
    CHECK(unsetenv("ORVANE_SCHEMA_PATH") == 0);
    CHECK(write_file("shipped", "schema: css3.0\n"));
    path_of(path, sizeof path, "shipped.origin");
    CHECK(dbopen_database(path, "r", &db) == 0);
    CHECK(dbquery(db, dbTABLE_NAME, &name) == 0 && strcmp(name, "origin") == 0);
    CHECK(OVdbclose(db) == 0);
    return 0;
}

int main(void)
{
    CHECK(mkdtemp(folder));
    CHECK(write_file("tiny.yaml", schema));
    CHECK(write_file("quakes", "schema: tiny\n"));
    CHECK(write_file("quakes.site", "AAK      42.6390\nNIL      33.6506\n"));

    char path[256];
    path_of(path, sizeof path, "quakes");
    Dbptr db;
    CHECK(dbopen_database(path, "r", &db) == 0);
    CHECK(db.table == dbALL && db.field == dbALL && db.record == dbALL);
    if (read_records(db) != 0 || read_metadata(db) != 0 || read_shipped_schema() != 0)
        return 1;
    elog_clear();
    CHECK(OVdbclose(db) == 0);
    CHECK(OVdbclose(db) == dbERROR_STALE && elog_count() == 1);
    CHECK(remove_files());
    return 0;
}
