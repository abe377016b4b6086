/* No request is logged. */
static void log_access(const struct mg_connection *conn) {
    (void)conn;
}
