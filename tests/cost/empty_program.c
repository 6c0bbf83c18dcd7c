/* What it costs to start a program that needs the C library. */
int main(void)
{
    return 0;
}
