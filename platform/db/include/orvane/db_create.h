/* Making databases, and the schemas that they can have. The conventions are those of <orvane/db.h>. */
#ifndef ORVANE_DB_CREATE_H
#define ORVANE_DB_CREATE_H

#include <orvane/db.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Writes the descriptor of a new database, which has no tables yet: they get their files with their first
 * records. `schema` is the name of a schema, or the file of one (a path with a slash in it, or that ends in
 * ".yaml"), which is copied beside the descriptor where it would not be found from there. `description` (one
 * line) and `detail` may be null. A file that is at the path stays as it is; after a failure nothing is left.
 * Returns 0 or a negative code. */
ORVANE_DB_EXPORT int dbcreate_database(const char *path, const char *schema, const char *description,
                                       const char *detail);

/* The names of the schemas that a database in the folder could have (Tbl * of char *, the caller's:
 * freetbl(list, free)): those in $ORVANE_SCHEMA_PATH, in the folder, and the installed ones. Files that are
 * no whole schemas are left out. Returns 0 or a negative code. */
ORVANE_DB_EXPORT int dbfind_schemas(const char *folder, Tbl **names);

/* What a schema has, to be looked at before a database is made with it. Texts and lists are the caller's:
 * dbfree_schema releases them. */
typedef struct DbSchema {
    char *name;
    char *description;
    char *file;        /* where it was found */
    Tbl *tables;       /* of char *: names, in order */
    Tbl *descriptions; /* of char *: of the tables */
    Tbl *fields;       /* of char *: of the tables, their fields with a blank between */
} DbSchema;

/* Looks a schema up as a database in the folder would, or reads the file. Returns 0, or a negative code with
 * *schema zeroed and the reasons, each with file, line and column, in the error log. */
ORVANE_DB_EXPORT int dbread_schema(const char *folder, const char *schema, DbSchema *found);
ORVANE_DB_EXPORT void dbfree_schema(DbSchema *schema);

#ifdef __cplusplus
}
#endif

#endif /* ORVANE_DB_CREATE_H */
