/* civetweb's own messages go to the server that was started, not into a file. */
static void mg_cry_internal_impl(const struct mg_connection *conn, const char *func, unsigned line, const char *fmt, va_list ap) {
    char text[256];
    (void)func;
    (void)line;
    if (conn != NULL && conn->phys_ctx != NULL && conn->phys_ctx->callbacks.log_message != NULL) {
        mg_vsnprintf(conn, NULL, text, sizeof(text), fmt, ap);
        (void)conn->phys_ctx->callbacks.log_message(conn, text);
    }
}
