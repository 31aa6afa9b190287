x
int main;
